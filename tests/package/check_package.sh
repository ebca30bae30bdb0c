#!/usr/bin/env bash
# Installs the libraries into a folder of their own and builds examples/list_fields against them twice, through
# find_package and through pkg-config; both programs must list the census, and examples/open_file must tell of a
# missing file. examples/build_database asks for the component of data and runs as it was linked.
# usage: check_package.sh BUILD_DIRECTORY SOURCE_DIRECTORY WORK_DIRECTORY
set -euo pipefail
build=$1 source=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >"$work/install.log"

cmake -S "$source/examples/list_fields" -B "$work/cmake" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/configure.log"
cmake --build "$work/cmake" >"$work/build.log"

cmake -S "$source/examples/build_database" -B "$work/data" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" >"$work/configure_data.log"
cmake --build "$work/data" >"$work/build_data.log"
built=$(env -u LD_LIBRARY_PATH "$work/data/build_database" \
    "$source/examples/census.dcf" "$source/examples/census.dat" "$work/census.sqlite" 2>"$work/progress.log")
[ "$built" = "1000 cases, 0 problems" ] || { echo "build_database printed '$built'" >&2; exit 1; }

pkgconfig=$(dirname "$(find "$prefix" -name model_Tessel.pc)")
libraries=$(dirname "$pkgconfig")
export PKG_CONFIG_PATH=$pkgconfig
# shellcheck disable=SC2046
c++ -std=c++17 -fPIC "$source/examples/list_fields/main.cpp" -o "$work/pkgconfig_program" \
    $(pkg-config --cflags --libs model_Tessel)

cat >"$work/records.cpp" <<'END'
#include <tessel_data/DataDictionary.h>

#include <cstdio>

int main(int, char** argv)
{
    const auto dictionary = tessel::DataDictionary::fromFile(QString::fromLocal8Bit(argv[1]));
    std::printf("%d\n", int(dictionary.records.size()));
}
END
# shellcheck disable=SC2046
c++ -std=c++17 -fPIC "$work/records.cpp" -o "$work/records" $(pkg-config --cflags --libs tessel_data)
records=$(LD_LIBRARY_PATH=$libraries "$work/records" "$source/examples/census.dcf")
[ "$records" = 3 ] || { echo "the data library counts '$records' records, not 3" >&2; exit 1; }

# shellcheck disable=SC2046
c++ -std=c++17 -fPIC "$source/examples/open_file/main.cpp" -o "$work/open_file" \
    $(pkg-config --cflags --libs model_Tessel)
opened=$(LD_LIBRARY_PATH=$libraries "$work/open_file" "$source/examples/census.dcf" || true)
grep -q "^HOUSEHOLD[[:space:]][0-9]* variables$" <<<"$opened" || { echo "open_file printed '$opened'" >&2; exit 1; }
if told=$(LD_LIBRARY_PATH=$libraries "$work/open_file" "$work/missing.dcf"); then
    echo "open_file takes a missing file for a dictionary" >&2
    exit 1
fi
case $told in "line 0: "?*) ;; *) echo "open_file says nothing of a missing file" >&2; exit 1 ;; esac

expected=$(printf '2\tPROVINCE\tProvince')
for program in "$work/cmake/list_fields" "$work/pkgconfig_program"; do
    first=$(LD_LIBRARY_PATH=$libraries "$program" "$source/examples/census.dcf" | sed -n 1p)
    if [ "$first" != "$expected" ]; then
        echo "$program printed '$first', not '$expected'" >&2
        exit 1
    fi
done
"$prefix/bin/tessel" fields "$source/examples/census.dcf" >/dev/null 2>"$work/tessel.log"
