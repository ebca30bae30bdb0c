# What ./run and ./check share: installing what is missing, configuring and building. Sourced by both.

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)

build_packages=(cmake ninja-build g++ pkg-config qtbase5-dev libreadstat-dev libsqlite3-dev libpq-dev
    libssl-dev)
# They read what the command exports and builds.
test_packages=(sqlite3 libxml2-utils postgresql pspp r-cran-readr r-cran-haven chromium)
lint_packages=(clang clang-format clazy libbenchmark-dev)

say() { printf '%s\n' "$*" >&2; }

# Installs those of the given Debian packages that are missing; elsewhere names them.
need_packages() {
    local package missing=()
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        command -v cmake >/dev/null && command -v ninja >/dev/null \
            && command -v pkg-config >/dev/null && pkg-config --exists Qt5Widgets && return
        say "This is no Debian system. Install what these Debian packages hold, then try again:"
        say "  $*"
        exit 1
    fi
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] \
            || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    say "Installing ${missing[*]}"
    if ! { "${as_root[@]}" apt-get -qq update \
            && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
                apt-get -qq install --no-install-recommends "${missing[@]}"; } >&2 </dev/null; then
        say "These packages could not be installed: ${missing[*]}"
        exit 1
    fi
}

# Checks of pages for readers with disabilities; without a network tests are skipped that need them.
need_axe() {
    [ -e "$root/build/npm/node_modules/axe-core/axe.min.js" ] && return
    command -v npm >/dev/null || need_packages npm
    mkdir -p "$root/build/npm"
    npm install --silent --no-audit --no-fund --no-package-lock --fetch-retries=1 --fetch-timeout=60000 \
        --prefix "$root/build/npm" axe-core@4.14.1 >&2 </dev/null \
        || say "axe-core could not be installed, so pages are not checked with it."
}

# build PRESET [TARGET...]: says nothing when all is well, shows the log when it is not.
build() {
    local preset=$1 directory=$root/build/$1
    shift
    mkdir -p "$directory"
    local log=$directory/build.log
    [ -e "$directory/build.ninja" ] || say "Building in build/$preset; the first time takes some minutes."
    (
        flock 9
        cd "$root"
        { [ -e "$directory/build.ninja" ] || cmake --preset "$preset"; } \
            && cmake --build --preset "$preset" ${1:+--target "$@"}
    ) >"$log" 2>&1 9>"$directory/.lock" && return
    tail -n 60 "$log" >&2
    say "The build failed; $log has all of its output."
    exit 1
}
