#!/bin/sh
# Installs a build to a fresh prefix, moves the prefix, and uses what stands there: the tool without any environment, and
# the libraries from a separate CMake project and through pkg-config.
# usage: moved-prefix.sh BUILD_DIR SOURCE_DIR SCRATCH_DIR
set -eu
build=$1 source=$2 scratch=$3
unset DLP_INSTALL_PATH DLP_STORE 2>/dev/null || true

rm -rf "$scratch"
mkdir -p "$scratch"
cmake --install "$build" --prefix "$scratch/first" >"$scratch/install.log"
mv "$scratch/first" "$scratch/moved"
prefix=$scratch/moved

env -i "$prefix/bin/dlpctl" metadata >"$scratch/metadata.txt"
grep -qi luhn "$scratch/metadata.txt"

for room in api settings platform/common platform/xml platform/logging platform/store platform/system platform/localization; do
    [ -d "$prefix/include/dlpparser/$room" ]
done
[ -f "$prefix/share/dlpparser/examples/starter-policy.xml" ]
for file in bash-completion/completions/dlpctl zsh/site-functions/_dlpctl fish/vendor_completions.d/dlpctl.fish; do
    grep -q dlpctl "$prefix/share/$file"
done
for page in man1/dlpctl.1 man1/dlpctl-store-dump.1 man5/dlp-policy.5 man5/dlpctl-config.5; do
    grep -q '^[.]TH' "$prefix/share/man/$page"
done

# The store's own headers and the managers' stay inside; every header that is installed compiles alone, as C++17.
cd "$prefix/include/dlpparser"
actual=$(ls platform/store settings | sed -n 's/\.h$//p' | tr '\n' ' ')
expected='CForwardingStore CSettingsRow CSettingsStore SettingsSchema '\
'CCfgSettingDLPDigitalAsset CCfgSettingDLPFilterExpression CCfgSettingDLPFilterKeyword CCfgSettingDLPFilterTemplate '\
'CMgmtClass CSubjectID '
[ "$actual" = "$expected" ] || { printf 'expected:\n%s\nactual:\n%s\n' "$expected" "$actual"; exit 1; }
for header in $(find . -name '*.h'); do
    echo "#include \"$header\"" | c++ -std=c++17 -Wall -Wextra -Werror -fsyntax-only -I. -x c++ -
done
cd "$scratch"

cmake -S "$source/tests/install/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$prefix" >"$scratch/consumer.log"
cmake --build "$scratch/consumer" >>"$scratch/consumer.log"
expected='<dictionary><keyword description="" score="1" caseSensitive="false">word</keyword></dictionary>
<?xml version="1.0" encoding="UTF-8"?><SAPolicy template_version="3.0.1000" localization_language=""><digitalAssets command="overwrite"/></SAPolicy>'
actual=$("$scratch/consumer/consumer" "$prefix/share/dlpparser/examples/starter-policy.xml")
[ "$actual" = "$expected" ] || { printf 'expected:\n%s\nactual:\n%s\n' "$expected" "$actual"; exit 1; }

pc=$(dirname "$(find "$prefix" -name dlpparser.pc)")
c++ -std=c++17 "$source/tests/install/consumer/consumer.cpp" $(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs dlpparser) \
    -o "$scratch/consumer-pc"
actual=$(LD_LIBRARY_PATH=$(dirname "$pc") "$scratch/consumer-pc")
[ "$actual" = "$expected" ]
echo "installed, moved and used"
