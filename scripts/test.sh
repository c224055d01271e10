#!/usr/bin/env bash
# The test command: installs what is missing, then builds and runs every test twice (an optimised
# gcc build, and a clang build with AddressSanitizer and UndefinedBehaviorSanitizer that also holds
# the fuzz targets), then the Windows build (MinGW-w64) and its tests under Wine, then runs each fuzz
# target for a short time.
#   FUZZ_SECONDS   seconds per fuzz target (default 20; 0 skips fuzzing)
#   QUILLO_LABELS  a ctest label regex to run only some areas (default: all), e.g. "host|install"
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

bash scripts/install-deps.sh
export CCACHE_BASEDIR="$root" CCACHE_DIR="${CCACHE_DIR:-$HOME/.cache/ccache}" CCACHE_MAXSIZE=5G
fuzz_seconds=${FUZZ_SECONDS:-20}
labels=${QUILLO_LABELS:-}
jobs=$(nproc)

summary=()
total_passed=0
total_failed=0

run_ctest() { # build-dir name
    local dir=$1 name=$2 log
    log="$dir/ctest.log"
    set +e
    ctest --test-dir "$dir" --output-on-failure -j "$jobs" ${labels:+-L "$labels"} 2>&1 | tee "$log"
    set -e
    local line passed failed
    line=$(grep -E '[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -1 || true)
    if [ -z "$line" ]; then
        if grep -q 'No tests were found' "$log"; then passed=0; failed=0; else passed=0; failed=1; fi
    else
        failed=$(sed -E 's/.* ([0-9]+) tests? failed out of ([0-9]+).*/\1/' <<<"$line")
        passed=$(( $(sed -E 's/.* failed out of ([0-9]+).*/\1/' <<<"$line") - failed ))
    fi
    total_passed=$((total_passed + passed))
    total_failed=$((total_failed + failed))
    summary+=("$name: $passed passed, $failed failed")
}

echo "== optimised build (gcc)"
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build/release -j "$jobs"
run_ctest build/release "optimised"

echo "== sanitizer and fuzz build (clang, ASan + UBSan)"
cmake -S . -B build/asan -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DQUILLO_FUZZ=ON -DQUILLO_BENCH=OFF >/dev/null
cmake --build build/asan -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1 run_ctest build/asan "sanitized"

echo "== Windows build (MinGW-w64), tests under Wine"
cmake -S . -B build/win32 -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-mingw64.cmake >/dev/null
cmake --build build/win32 -j "$jobs"
# shellcheck source=scripts/wine-env.sh
source scripts/wine-env.sh build/win32
trap wine_env_stop EXIT
run_ctest build/win32 "windows"
wine_env_stop
trap - EXIT

if [ "$fuzz_seconds" -gt 0 ]; then
    echo "== fuzzing, $fuzz_seconds s per target"
    if bash scripts/fuzz.sh build/asan "$fuzz_seconds"; then
        n=$(grep -c . build/asan/fuzzers.txt || true)
        summary+=("fuzz: $n passed, 0 failed")
        total_passed=$((total_passed + n))
    else
        summary+=("fuzz: 0 passed, 1 failed")
        total_failed=$((total_failed + 1))
    fi
fi

echo
printf '%s\n' "${summary[@]}"
echo "total: $total_passed passed, $total_failed failed"
[ "$total_failed" -eq 0 ]
