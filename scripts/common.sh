# What the scripts share; sourced, with the checkout's root as the working directory.
# shellcheck shell=bash

export LC_ALL=C.UTF-8
export DEBIAN_FRONTEND=noninteractive

# Packages by purpose, for Debian 12.
# qt6-translations-l10n has Qt's own texts in Russian; packages for Windows take them along.
# pandoc makes the manual.
BUILD_PACKAGES=(g++ cmake ninja-build ccache libcli11-dev nlohmann-json3-dev libgcrypt20-dev zlib1g-dev qt6-base-dev libqcustomplot-dev qt6-translations-l10n
    libfftw3-dev libasound2-dev pkg-config libcomedi-dev libiio-dev libsigrok-dev pandoc)
# alsa-utils brings recordings of speech that the replay driver's tests play; locales the Russian number format; xvfb a
# display that goes away.
TEST_PACKAGES=(googletest libbenchmark-dev alsa-utils locales xvfb python3-jsonschema)
FUZZ_PACKAGES=(clang libclang-rt-14-dev)
WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix libgcrypt-mingw-w64-dev libz-mingw-w64-dev wine wine64)
# The Debian packages, and what looks at them and tries them.
DEBIAN_PACKAGES=(build-essential dpkg-dev debhelper dh-python pybuild-plugin-pyproject python3-all python3-setuptools)
DEBIAN_CHECK_PACKAGES=(lintian desktop-file-utils appstream man-db zsh debootstrap)
# The packages for Windows, and a display on which the installed program is tried.
PACKAGING_PACKAGES=(nsis zip unzip xvfb xauth)

fail() {
    echo "!!!! $*" >&2
    exit 1
}

# The version of the project, from the one place that has it.
project_version() { sed -n 's/^project(Tarno2 VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt; }

# The files of the source tree, ended by zeros: those that git knows or would take, else all but what is built.
tree_files() {
    if git rev-parse --git-dir >/dev/null 2>&1; then
        git ls-files -z --cached --others --exclude-standard --deduplicate | while IFS= read -r -d '' file; do
            [ ! -e "$file" ] && [ ! -L "$file" ] || printf '%s\0' "$file"
        done
    else
        find . -path ./build -prune -o -type f -print0 | sed -z 's|^\./||'
    fi | LC_ALL=C sort -z
}

# When the tree was made, in seconds since 1970: its last commit, else what SOURCE_DATE_EPOCH says, else its changelog.
tree_time() { git log -1 --format=%ct 2>/dev/null || echo "${SOURCE_DATE_EPOCH:-$(stat -c %Y CHANGELOG.md)}"; }

# check TEXT COMMAND...: one line of a report, counted in `passed` or `failed`.
check() {
    local text=$1
    shift
    if "$@"; then
        echo "ok: $text" && passed=$((passed + 1))
    else
        echo "FAILED: $text" && failed=$((failed + 1))
    fi
}
not() { ! "$@"; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo -n "$@" || fail "Not allowed: $*. Run it as root, then this script again."
    else
        fail "Needs root: $*. Run it as root, then this script again."
    fi
}

is_installed() {
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the named packages that are missing; asks nothing, and touches no network when none is.
install_packages() {
    command -v dpkg-query >/dev/null || fail "Only Debian is known here. Install what corresponds to: $*"
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ] && ! sudo -n true 2>/dev/null; then
        fail "Packages are missing, and installing them needs root. Run this, then the script again:
apt-get update && apt-get install -y --no-install-recommends ${missing[*]}"
    fi
    echo "Installing ${missing[*]}"
    as_root apt-get -q -o DPkg::Lock::Timeout=300 update
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 \
        install --no-install-recommends "${missing[@]}"
}

# Whether a build for Windows has the windows in it.
has_windows() { grep -q '^TARNO2_GUI:.*=ON$' "$1/CMakeCache.txt"; }

# A screen of its own, of 1280 x 900: its process is $screen, which the caller ends.
start_screen() {
    local number
    number=$(mktemp)
    Xvfb -displayfd 1 -noreset -screen 0 1280x900x24 >"$number" 2>/dev/null &
    screen=$!
    for _ in $(seq 100); do
        [ ! -s "$number" ] || break
        sleep 0.1
    done
    [ -s "$number" ] || fail "No screen"
    DISPLAY=:$(cat "$number")
    export DISPLAY
    rm "$number"
}

# A Wine of its own, thrown away afterwards: no setting of the user's plays a part, and none is changed.
start_wine() {
    unset DISPLAY
    wine_folder=$(mktemp -d)
    export WINEPREFIX=$wine_folder/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
    trap stop_wine EXIT
    # With a home of its own: Wine makes links to the user's documents otherwise.
    HOME=$wine_folder wine wineboot --init </dev/null || fail "Wine does not start"
    wineserver -w 2>/dev/null || true
}

stop_wine() {
    wineserver -k >/dev/null 2>&1 || true
    wineserver -w >/dev/null 2>&1 || true
    rm -rf "$wine_folder"
}

# Makes the Russian locale known, in which a decimal comma would show up wherever one slips in.
ensure_russian_locale() {
    locale -a 2>/dev/null | grep -qi '^ru_RU\.utf-\?8$' || as_root localedef -i ru_RU -f UTF-8 ru_RU.UTF-8
}

# Compiles through ccache where there is one. What one checkout has compiled serves the next, wherever it lies.
use_ccache() {
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache CMAKE_C_COMPILER_LAUNCHER=ccache
        export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
    fi
}

# Builds the named targets in the folder of the preset "release". All scripts prepare a machine and that folder in the
# same way, so that each can go on with what another has built.
build_targets() {
    install_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
    use_ccache
    cmake --preset release -DTARNO2_TESTS=ON
    cmake --build --preset release --target "$@"
}

# Builds what a user runs: the programs, the drivers and the signal view.
build_programs() {
    build_targets Tarno2 tarno2-console tarno2-export tarno2-drivers tarno2-recover tarno2-verify \
        tarno2-thumbnail simulator replay serial network sound iio sigrok comedi scopera manual sample
}

# Counts the tests in the output of `ctest -V`: the cases of every GoogleTest program, and one for any other entry.
# A program that fails without naming a case (it crashed, hung or ran nothing) counts as one failure.
# Prints "<passed> <failed> <skipped>".
count_tests() {
    tr -d '\r' <"$1" | awk '
        /^[0-9]+: \[  PASSED  \] [0-9]+ test/ { entry = $1; sub(":", "", entry); cases[entry] = 1; passed += $5 }
        /^[0-9]+: \[  SKIPPED \] [0-9]+ test/ { skipped += $5 }
        /^[0-9]+: \[  FAILED  \] [0-9]+ test.*listed below/ {
            entry = $1; sub(":", "", entry); cases[entry] = 1; failed += $5; named[entry] = 1
        }
        /^ *[0-9]+\/[0-9]+ Test +#[0-9]+: / {
            entry = $0; sub(/^[^#]*#/, "", entry); sub(/:.*/, "", entry)
            if ($0 ~ /\*\*\*Not Run|\*\*\*Skipped|\(Disabled\)/) skipped++
            else if ($0 !~ / Passed +[0-9.]+ sec/) { if (!named[entry]) failed++ }
            else if (!cases[entry]) passed++
        }
        END { print passed + 0, failed + 0, skipped + 0 }'
}

# Prints the tests that were skipped according to the output of `ctest -V`, each with its reason on one line.
list_skipped() {
    tr -d '\r' <"$1" | sed -n 's/^[0-9]*: //p' | awk '
        /^\[ RUN      \] / { name = $4; reason = ""; next }
        /: Skipped$/ { reading = 1; next }
        /^Google Test trace:$/ { reading = 0 }
        /^\[  SKIPPED \] .* ms\)$/ { print "skipped: " name ": " reason; reading = 0; next }
        reading && NF { reason = reason (reason == "" ? "" : " ") $0 }'
}

# ThreadSanitizer can't lay out its memory when the kernel randomises addresses too widely; then its programs run
# without randomisation. Prints the prefix that a command needs, nothing when none.
tsan_prefix() {
    local folder program
    folder=$(mktemp -d)
    program=$folder/hello
    echo 'int main() { return 0; }' | c++ -fsanitize=thread -x c++ -o "$program" - || fail "no ThreadSanitizer here"
    local i
    for i in 1 2 3 4 5; do
        if ! "$program" >/dev/null 2>&1; then
            setarch -R "$program" >/dev/null 2>&1 || fail "ThreadSanitizer does not run on this kernel"
            echo "setarch -R"
            break
        fi
    done
    rm -rf "$folder"
}
