"""What one process of the library holds: the store, the log, and what lives until its end."""

from __future__ import annotations

from assets import DigitalAssets, read_strings
from log import Log
from metadata import MetaData
from records import Store


class Process:
    """One start of the library over the files of its home."""

    def __init__(self, home: dict[str, bytes | None]) -> None:
        self.home = home
        self.log = Log()
        self.store = Store()
        strings = read_strings(home.get("strings.txt"))
        self.assets = DigitalAssets(self.store, self.log, strings)
        self.asset_names: dict[str, str] = {}
        self._policy_lists: MetaData | None = None

    def policy_lists(self) -> MetaData:
        """The instance that all exports share, made and loaded by the first."""
        if self._policy_lists is None:
            self._policy_lists = self.new_policy_lists()
        return self._policy_lists

    def new_policy_lists(self) -> MetaData:
        """An instance of its own, loaded."""
        return MetaData(self.home.get("PredefinedDLPPolicy.xml"), self.log)
