#include "cli/manual/CompletionScripts.h"

namespace CompletionScript {

// A word that holds "=" arrives in three parts; each candidate stands for the last of them alone.
const char BASH[] = R"(# Completion of dlpctl for bash. To use it without installing: source <(dlpctl completion bash)
_dlpctl() {
    local IFS=$'\n'
    local -a words=("${COMP_WORDS[@]:1:COMP_CWORD}")
    COMPREPLY=($("${COMP_WORDS[0]}" --json=false completion bash -- "${words[@]}" 2>/dev/null))
}
complete -o bashdefault -o default -F _dlpctl dlpctl
)";

const char ZSH[] = R"(#compdef dlpctl
# Completion of dlpctl for zsh. To use it without installing: source <(dlpctl completion zsh)
_dlpctl() {
    local -a candidates
    candidates=("${(@f)$("${words[1]}" --json=false completion zsh -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
    if [[ -n "${candidates[1]}" ]]; then
        _describe dlpctl candidates
    else
        _files
    fi
}
if [[ "${funcstack[1]}" == _dlpctl ]]; then
    _dlpctl "$@"
else
    compdef _dlpctl dlpctl
fi
)";

const char FISH[] = R"(# Completion of dlpctl for fish. To use it without installing: dlpctl completion fish | source
function __dlpctl_candidates
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l candidates ($words[1] --json=false completion fish -- $words[2..-1] "$current" 2>/dev/null)
    if set -q candidates[1]
        printf '%s\n' $candidates
    else
        __fish_complete_path "$current"
    end
end
complete -c dlpctl -f -a '(__dlpctl_candidates)'
)";

}  // namespace CompletionScript
