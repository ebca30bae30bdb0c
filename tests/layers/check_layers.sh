#!/usr/bin/env bash
# check_layers.sh FOLDER: fails when, in the project of FOLDER, a library or a folder of the command includes what does
# not stand below it.
set -euo pipefail
cd "$1"

# folder of the command: the folders whose headers it may include, its own among them
allowed=(
    "text: text"
    "listing: listing text"
    "writers: writers listing text"
    "process: process text"
    "reading: reading listing process text"
    "checking: checking reading listing process writers text"
    "building: building checking reading listing process writers text"
    "figures: figures checking reading listing process writers text"
    "converting: converting checking reading listing process writers text"
    "lookups: lookups reading listing process writers text"
)
folders=$(cd tessel && printf '%s\n' */ | tr -d /)
commands="tessel/|\.\./|$(cd tessel && printf '%s|' *.h | sed 's/\./\\./g; s/|$//')"

failed=0
# may_not FOLDER PATTERN: FOLDER includes nothing that PATTERN names, in quotes or in angle brackets.
may_not() {
    local hits
    if hits=$(grep -nE "^[[:space:]]*#[[:space:]]*include[[:space:]]*([<\"]($2)|\"[^/]*\")" "$1"/*.h "$1"/*.cpp); then
        printf '%s/ may not include:\n%s\n' "$1" "$hits"
        failed=1
    fi
}

for row in "${allowed[@]}"; do
    above=$(grep -vxE "$(tr ' ' '|' <<<"${row#*: }")" <<<"$folders" | sed 's|$|/|' | paste -sd'|')
    may_not "tessel/${row%%:*}" "$commands${above:+|$above}"
done
all=$(sed 's|$|/|' <<<"$folders" | paste -sd'|')
may_not tessel_data "$commands|$all"
may_not model_Tessel "$commands|$all|tessel_data/"

for folder in $folders; do
    case " ${allowed[*]} " in
    *" $folder: "*) ;;
    *) echo "tessel/$folder is not in the table of layers"; failed=1 ;;
    esac
done

# The page on the architecture names every folder, and of the project's own ones each that holds something.
page=docs/architecture.md
for folder in $(sed 's|$|/|' <<<"$folders") $(git ls-files 2>/dev/null | sed -n 's|^\([^./][^/]*/\).*|\1|p' | sort -u); do
    grep -qF "$folder" $page || { echo "$folder is not in docs/architecture.md"; failed=1; }
done
exit $failed
