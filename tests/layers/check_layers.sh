#!/usr/bin/env bash
# check_layers.sh FOLDER: fails when a folder of the command includes what does not stand below it.
set -euo pipefail
cd "$1"

# folder: the folders whose headers it may include, its own among them
allowed=(
    "text: text"
    "listing: listing text"
    "writers: writers listing text"
    "process: process text"
    "reading: reading listing process text"
    "checking: checking reading listing process writers text"
    "building: building checking reading listing process writers text"
    "lookups: lookups reading listing process writers text"
)

failed=0
for row in "${allowed[@]}"; do
    folder=${row%%:*}
    pattern=$(tr ' ' '|' <<<"${row#*: }")
    if hits=$(grep -nE '^#include "' "$folder"/*.h "$folder"/*.cpp | grep -vE "#include \"($pattern)/"); then
        printf '%s/ may not include:\n%s\n' "$folder" "$hits"
        failed=1
    fi
done
for folder in */; do
    case " ${allowed[*]} " in
    *" ${folder%/}: "*) ;;
    *) echo "$folder is not in the table of layers"; failed=1 ;;
    esac
done

# The page on the architecture names every folder, and of the project's own ones each that holds something.
page=../docs/architecture.md
for folder in */ $(git -C .. ls-files 2>/dev/null | sed -n 's|^\([^./][^/]*/\).*|\1|p' | sort -u); do
    grep -qF "$folder" $page || { echo "$folder is not in docs/architecture.md"; failed=1; }
done
exit $failed
