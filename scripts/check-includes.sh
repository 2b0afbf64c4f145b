#!/usr/bin/env bash
# Fails when an #include crosses a wall between the folders, or code outside platform/ knows the operating system.
#
#   scripts/check-includes.sh [FOLDER]       checks a source tree (this one)
#   scripts/check-includes.sh --self-test    checks that planted violations are found, and that nothing else is
#
# Each violation is printed as FILE:LINE: reason. docs/architecture.md says what the walls are for.
set -euo pipefail
export LC_ALL=C.UTF-8
root=$(cd "$(dirname "$0")/.." && pwd)

find_sources() {
    find . \( -path ./build -o -path ./.git \) -prune -o -type f \
        \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -name '*.cc' -o -name '*.c' -o -name '*.h.in' \) -print |
        sed 's|^\./||' | LC_ALL=C sort
}

# Prints the violations of the tree in the current folder.
find_violations() {
    find_sources | xargs -r -d '\n' awk '
        BEGIN {
            # What each folder may include of ours, itself included. Folders that are missing here may include any.
            reach["sdk"]      = ""
            reach["platform"] = "platform"
            reach["language"] = "platform language"
            reach["records"]  = "platform language records"
            reach["sync"]     = "platform language records sync"
            reach["config/logs"]     = "platform language config/logs"
            reach["config/files"]    = reach["config/logs"] " records config/files"
            reach["exports"]         = reach["config/files"] " exports"
            reach["config/settings"] = reach["config/files"] " sync config/settings"
            reach["core/storage"]    = reach["config/files"] " sync core/storage"
            reach["core/devices"]    = reach["config/settings"] " core/devices"
            reach["core/recording"]  = "platform language records sync config core"
            reach["display"]  = "platform language records sync config core display"
            reach["measure"]  = reach["display"] " measure"
            reach["ui"]       = reach["measure"] " exports ui"
            reach["apps"]     = reach["ui"] " apps"
            reach["scopera"]  = "platform scopera"
            reach["drivers"]  = "platform records drivers"
            ours = "sdk platform language records sync config exports core display measure ui apps scopera drivers tests bench fuzz"
            sdk_users = "sdk core/devices core/recording display measure ui apps scopera drivers tests bench"
            qt_users = "ui scopera apps tests bench"
            # Headers of libraries that one driver or room alone is built on, and of the tests of it.
            libraries["drivers/comedi"] = "comedilib.h"
            libraries["tests/drivers/comedi"] = libraries["drivers/comedi"]
            libraries["tests/kernel"] = libraries["drivers/comedi"]
            libraries["drivers/iio"] = "iio.h"
            libraries["exports"] = "zlib.h"
            libraries["drivers/sigrok"] = "libsigrok/libsigrok.h glib.h"
            libraries["measure"] = "fftw3.h emmintrin.h"
            # Of those, the ones that platform/ includes, by the first part of a header, and the files that may.
            behind_platform["alsa"] = "^(platform/posix/sound_input|tests/support/sound_card/)"
            # The C++ standard library without <csignal>, whose meaning differs from system to system.
            standard = "algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv " \
                "chrono cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine " \
                "cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution " \
                "expected filesystem format forward_list fstream functional future initializer_list iomanip ios iosfwd " \
                "iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers " \
                "numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex " \
                "source_location span sstream stack stdexcept stop_token streambuf string string_view strstream " \
                "syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set " \
                "utility valarray variant vector version"
            systems = "(_WIN32|_WIN64|WIN32|WIN64|__WIN32__|_MSC_VER|__MINGW32__|__MINGW64__|__CYGWIN__|__linux__|" \
                "__linux|linux|__unix__|__unix|unix|__APPLE__|__FreeBSD__|__OpenBSD__|__NetBSD__|__ANDROID__|_POSIX_[A-Z_]+)"
        }
        function has(list, word) { return index(" " list " ", " " word " ") > 0 }
        # The folder of a file, or the room in it where rooms have walls.
        function place(file,    parts) {
            split(file, parts, "/")
            return parts[1] ~ /^(config|core)$/ ? parts[1] "/" parts[2] : parts[1]
        }
        function report(reason) { print FILENAME ":" FNR ": " reason }

        FNR == 1 {
            inside = FILENAME
            sub(/^src\//, "", inside)
            folder = place(inside)
            directory = inside
            sub(/\/[^\/]*$/, "", directory)
            in_system = inside ~ /^(platform|sdk\/example(-tcp)?|sdk\/tarno2\/driver\/data_event\.h|tests\/support|tests\/platform|tests\/sweep|tests\/drivers\/comedi)(\/|$)/
        }

        /^[ \t]*#[ \t]*(if|ifdef|ifndef|elif|elifdef|elifndef)[^a-z]/ {
            line = $0
            sub("//.*", "", line)
            if (line ~ ("(^|[^A-Za-z0-9_])" systems "([^A-Za-z0-9_]|$)") && !in_system && inside !~ /^sdk\/tarno2\//)
                report("tests which operating system it is built for; only platform/ may")
        }

        /^[ \t]*#[ \t]*include/ {
            line = $0
            sub(/^[ \t]*#[ \t]*include[ \t]*/, "", line)
            if (line !~ /^("[^"]*"|<[^>]*>)/) {
                report("an include that is no plain name can not be checked")
                next
            }
            angle = line ~ /^</
            name = substr(line, 2)
            sub(/[">].*/, "", name)
            top = name
            sub("/.*", "", top)

            if (name ~ /(^|\/)\.\.?(\/|$)/) {
                report("\"" name "\" is not written from src/ or the root of the project")
            } else if (top == "tarno2" && name ~ /\//) {
                if (!has(sdk_users, folder)) report(folder "/ may not include the driver interface <" name ">")
            } else if (name ~ /\// && has(ours, top)) {
                if ((folder in reach) && !has(reach[folder], top) && !has(reach[folder], place(name))) report(folder "/ may not include \"" name "\"")
            } else if (top in behind_platform) {
                if (inside !~ behind_platform[top]) report(folder "/ may not include the library <" name ">")
            } else if (!angle) {
                if (inside !~ /^sdk\/example(-tcp)?\//) report("\"" name "\" is not written from src/ or the root of the project")
            } else if (name ~ /^Q[A-Za-z0-9]*(\/|$)|^q[a-z0-9]+\.h$|^qcustomplot/) {
                if (!has(qt_users, folder)) report(folder "/ may not include the window toolkit <" name ">")
            } else if (has(standard, name)) {
            } else if (folder == "sdk" && name ~ /^(stddef|stdint|string|stdlib|math)\.h$/) {
            } else if ((directory in libraries) && has(libraries[directory], name)) {
            } else if (folder == "tests" && name ~ /^(gtest|gmock)\//) {
            } else if (folder == "bench" && name ~ /^benchmark\//) {
            } else if (folder == "apps" && name ~ /^CLI\//) {
            } else if (folder == "records" && name == "nlohmann/json.hpp") {
            } else if (!in_system) {
                report(folder "/ may not include <" name ">: an operating-system header or an unknown one")
            }
        }'
}

# One planted line a line of this table: whether it is a violation, the file, the text.
planted() {
    cat <<'TABLE'
bad src/platform/a.h #include "records/key_value_file.h"
bad src/platform/b.h #include "language/language_table.h"
bad src/language/a.cpp #include "config/debug_log.h"
bad src/records/a.cpp #include "sync/block_evaluator.h"
bad src/records/b.cpp #include <tarno2/IADCDevice.h>
bad src/sync/a.cpp #include "config/debug_log.h"
bad src/sync/b.cpp   #  include   "core/driver.h"
bad src/config/settings/a.cpp #include "core/driver.h"
bad src/config/settings/b.cpp #include <tarno2/IADCDevice.h>
bad src/platform/c.cpp #include <tarno2/IADCDevice.h>
bad src/language/b.cpp #include <tarno2/ISCOPERA.h>
bad src/core/recording/a.cpp #include "ui/main_form.h"
bad src/core/recording/b.cpp #include "apps/console.h"
bad src/core/recording/c.cpp #include <ui/main_form.h>
bad src/core/recording/d.cpp #include "drivers/simulator/board.h"
bad src/core/recording/e.cpp #include "../ui/main_form.h"
bad src/core/recording/f.cpp #include "driver.h"
bad src/core/recording/g.cpp #include "tests/support/temporary_folder.h"
bad src/config/logs/a.cpp #include "config/files/recording_name.h"
bad src/config/logs/b.cpp #include "records/key_value_file.h"
bad src/config/files/a.cpp #include "config/settings/settings_file.h"
bad src/config/files/b.cpp #include "sync/block_evaluator.h"
bad src/core/storage/a.cpp #include <tarno2/IADCDevice.h>
bad src/core/storage/b.cpp #include "core/devices/driver.h"
bad src/core/storage/c.cpp #include "core/recording/board.h"
bad src/core/storage/d.cpp #include "config/settings/settings_file.h"
bad src/core/devices/a.cpp #include "core/storage/data_writer.h"
bad src/core/devices/b.cpp #include "core/recording/board.h"
bad src/records/d.cpp #include "config/files/recording_name.h"
bad src/ui/a.cpp #include "apps/console.h"
bad src/ui/b.cpp #include "scopera/plot.h"
bad src/apps/a.cpp #include "drivers/simulator/board.h"
bad src/drivers/simulator/a.cpp #include "core/driver.h"
bad src/drivers/simulator/b.cpp #include "config/debug_log.h"
bad src/scopera/a.cpp #include "core/driver.h"
bad sdk/tarno2/a.h #include "platform/event.h"
bad sdk/tarno2/b.h #include <windows.h>
good sdk/tarno2/driver/data_event.h #include <windows.h>
bad sdk/example/a.cpp #include "platform/event.h"
bad src/core/recording/h.cpp #include <windows.h>
bad src/core/recording/i.cpp #include <unistd.h>
bad src/config/settings/c.cpp #include <sys/statvfs.h>
bad src/records/c.cpp #include <fcntl.h>
bad src/drivers/replay/a.cpp #include <pthread.h>
bad src/drivers/replay/b.cpp #include <sys/eventfd.h>
bad src/apps/b.cpp #include <signal.h>
bad src/apps/c.cpp #include <csignal>
bad src/core/recording/j.cpp #include <dlfcn.h>
bad src/core/recording/k.cpp #include <poll.h>
bad src/sync/c.h #if defined(_WIN32)
bad src/core/recording/l.h #ifdef __linux__
bad src/apps/d.cpp #elif defined(__MINGW32__)
bad src/drivers/simulator/c.cpp #  ifndef _WIN32
bad bench/a.cpp #if !defined _WIN32 && defined(X)
bad src/core/recording/m.cpp #include <QString>
bad src/config/settings/d.cpp #include <QtCore/QFile>
bad src/records/d.cpp #include <qcustomplot.h>
bad src/drivers/simulator/d.cpp #include <qobject.h>
bad src/config/settings/version.h.in #include "core/driver.h"
bad src/display/a.cpp #include "ui/show_form.h"
bad src/display/b.cpp #include <QWidget>
bad src/display/c.cpp #include "measure/statistics.h"
bad src/display/d.cpp #include <fftw3.h>
bad src/measure/a.cpp #include "ui/show_form.h"
bad src/core/recording/n.cpp #include <gtest/gtest.h>
bad src/core/recording/o.cpp #include HEADER
bad src/drivers/simulator/g.cpp #include <comedilib.h>
bad src/core/devices/d.cpp #include <comedilib.h>
bad src/records/h.cpp #include <zlib.h>
bad src/core/storage/f.cpp #include "exports/exporters.h"
bad src/exports/b.cpp #include "config/settings/settings_file.h"
bad src/drivers/comedi/a.cpp #include <unistd.h>
bad src/platform/posix/b.cpp #include <alsa/asoundlib.h>
bad src/drivers/sound/a.cpp #include <alsa/asoundlib.h>
bad src/drivers/simulator/h.cpp #include <iio.h>
bad src/drivers/iio/a.cpp #include <libsigrok/libsigrok.h>
good src/exports/a.cpp #include <zlib.h>
good src/apps/g.cpp #include "exports/exporters.h"
good src/drivers/iio/b.cpp #include <iio.h>
good src/drivers/sigrok/a.cpp #include <libsigrok/libsigrok.h>
good src/drivers/sigrok/b.cpp #include <glib.h>
good src/platform/posix/a.cpp #include <unistd.h>
good src/platform/posix/sound_input_alsa.cpp #include <alsa/asoundlib.h>
good src/platform/windows/a.cpp #include <windows.h>
good src/platform/d.cpp #if defined(_WIN32)
good src/language/c.cpp #include "platform/codepage1251.h"
good src/records/e.cpp #include "platform/file.h"
good src/core/storage/e.cpp #include "config/files/recording_name.h"
good src/core/devices/c.cpp #include "config/settings/program_settings.h"
good src/core/recording/u.cpp #include "core/storage/data_writer.h"
good src/config/settings/e.cpp #include "sync/block_evaluator.h"
good src/core/recording/p.cpp #include <tarno2/IADCDevice.h>
good src/core/recording/q.cpp #include "config/version.h"
good src/core/recording/r.cpp // #include "ui/main_form.h"
good src/core/recording/s.cpp #if defined(__GNUC__) // not _WIN32
good src/core/recording/t.cpp #include <atomic>
good src/measure/b.cpp #include <fftw3.h>
good src/measure/c.cpp #include "display/screen.h"
good src/ui/c.cpp #include <QMainWindow>
good src/ui/e.cpp #include "measure/statistics.h"
good src/ui/d.cpp #include "core/driver.h"
good src/apps/e.cpp #include "ui/main_form.h"
good src/apps/f.cpp #include <CLI/CLI.hpp>
good src/records/g.cpp #include <nlohmann/json.hpp>
good src/scopera/b.cpp #include <qcustomplot.h>
good src/drivers/simulator/e.cpp #include "records/key_value_file.h"
good src/drivers/simulator/f.cpp #include "drivers/common/pace.h"
good src/drivers/comedi/b.cpp #include <comedilib.h>
good tests/drivers/comedi/a.cpp #include <comedilib.h>
good sdk/tarno2/c.h #if defined(_WIN32)
good sdk/tarno2/d.h #include <stdint.h>
good sdk/example/b.cpp #include <tarno2/IADCDevice.h>
good sdk/example/c.cpp #include <pthread.h>
good tests/core/a.cpp #include "drivers/simulator/board.h"
good tests/core/b.cpp #include <gtest/gtest.h>
good bench/b.cpp #include <benchmark/benchmark.h>
TABLE
}

self_test() {
    local kind file text passed=0 failed=0 found
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    while read -r kind file text; do
        mkdir -p "$folder/$(dirname "$file")"
        printf '#pragma once\n%s\n' "$text" >"$folder/$file"
    done < <(planted)
    found=$(cd "$folder" && find_violations)
    while read -r kind file text; do
        if [ "$kind" = bad ] && ! grep -qF "$file:2: " <<<"$found"; then
            echo "self-test: not found: $file: $text" && failed=$((failed + 1))
        elif [ "$kind" = good ] && grep -qF "$file:" <<<"$found"; then
            echo "self-test: wrongly found: $file: $text" && failed=$((failed + 1))
        else
            passed=$((passed + 1))
        fi
    done < <(planted)
    echo "$passed passed, $failed failed"
    [ "$failed" -eq 0 ]
}

if [ "${1:-}" = --self-test ]; then
    self_test
else
    cd "${1:-$root}"
    violations=$(find_violations)
    if [ -n "$violations" ]; then
        echo "$violations"
        echo "$(wc -l <<<"$violations") includes or conditions cross a wall (docs/architecture.md)"
        exit 1
    fi
    files=$(find_sources | wc -l)
    echo "No include crosses a wall in $files files"
    [ "$files" -gt 0 ]
fi
