#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a bounded time.
#   tools/fuzz.sh [SECONDS_PER_TARGET]   (default 60)
# Inputs that crash land in build-fuzz/findings/<target>/; turn each into a
# regression test before fixing it.
# Each target starts from tests/fuzz/seeds/<target>/, which the image builders
# write: build/tests/make_fuzz_seeds tests/fuzz/seeds
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/deps.sh
# shellcheck disable=SC2086
ostrel_install $OSTREL_BUILD_PACKAGES $OSTREL_SANITIZE_PACKAGES
seconds=${1:-60}
if [ ! -f build-fuzz/build.ninja ]; then
  CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DOSTREL_FUZZ=ON -DOSTREL_GUI=OFF -DBUILD_TESTING=OFF >/dev/null
fi
cmake --build build-fuzz -j "$(nproc)" -- --quiet
export ASAN_OPTIONS=detect_leaks=0:allocator_may_return_null=1
status=0
ran=0
for target in build-fuzz/fuzz_*; do
  [ -x "$target" ] || continue
  name=$(basename "$target")
  corpus=build-fuzz/corpus/$name findings=build-fuzz/findings/$name
  mkdir -p "$corpus" "$findings"
  [ -d "tests/fuzz/seeds/$name" ] && cp -n tests/fuzz/seeds/"$name"/* "$corpus"/ 2>/dev/null || true
  ran=$((ran + 1))
  echo "fuzzing $name for ${seconds}s"
  if ! "$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 \
       -artifact_prefix="$findings/" -print_final_stats=0 "$corpus" >"build-fuzz/$name.log" 2>&1; then
    echo "  FINDING: see $findings and build-fuzz/$name.log"
    status=1
  fi
  grep -ho "Done [0-9]* runs in [0-9]* second(s)" "build-fuzz/$name.log" | sed 's/^/  /' || true
done
[ "$ran" -gt 0 ] || { echo "no fuzz targets were built" >&2; exit 1; }
exit $status
