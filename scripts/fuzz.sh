#!/usr/bin/env bash
# Builds the libFuzzer target with clang and runs it for SECONDS (default 60)
# on a seed corpus made from the repository's test listings.
#
#   scripts/fuzz.sh [SECONDS]
#
# Environment:
#   VESK_FUZZ_DIR    work folder for the corpus, the seeds and the crash files
#                    (default /tmp/vesk-fuzz); nothing is written into the repository
#   VESK_FUZZ_BUILD  build folder (default build-fuzz in the repository)
#   VESK_FUZZ_JOBS   parallel fuzzing jobs (default 1)
#   VESK_FUZZ_KEEP_GOING=1  record crashes, timeouts and memory blow-ups as
#                    artifacts and go on instead of stopping at the first one
#   VESK_FUZZ_ARGS   more libFuzzer options
# The status is libFuzzer's: 0 when the run found nothing.
set -euo pipefail

seconds="${1:-60}"
root="$(cd "$(dirname "$0")/.." && pwd)"
work="${VESK_FUZZ_DIR:-/tmp/vesk-fuzz}"
build="${VESK_FUZZ_BUILD:-$root/build-fuzz}"
jobs="${VESK_FUZZ_JOBS:-1}"

# Packages: the normal build dependencies plus clang and its sanitizer runtimes.
bash "$root/scripts/install-deps.sh"
packages=(clang-19 libclang-rt-19-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq "${missing[@]}" >/dev/null
fi

CC=clang-19 CXX=clang++-19 cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVESK_BUILD_FUZZ=ON -DVESK_BUILD_TESTS=OFF -DVESK_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" --target vesk_fuzz

# Seeds: every test listing and fixture, each behind a few configuration bytes (see
# tests/fuzz/vesk_fuzz.cpp) so that every generation and reader starts with
# real text; the checked-in regression inputs already carry theirs.
seeds="$work/seeds"
rm -rf "$seeds"
mkdir -p "$seeds" "$work/corpus" "$work/artifacts"
n=0
add_seed() {  # config-byte (octal) file
  # shellcheck disable=SC2059  # the format is the octal escape of the byte
  printf "\\$1" >"$seeds/seed-$n"
  cat "$2" >>"$seeds/seed-$n"
  n=$((n + 1))
}
while IFS= read -r -d '' file; do
  case "$(basename "$file")" in
    args | expected_* | normalize | Makefile | *.md | *.py | *.cl) continue ;;
  esac
  # gfx10 with the layout detected, wave32 and wave64 with gaps; the other
  # generations with the layout detected; gfx10 with each reader named.
  for config in 027 167 024 025 026 003 007 013 017; do add_seed "$config" "$file"; done
  # LLVM output also with its reader named, and with its processor directive
  # choosing the generation.
  if grep -q -e '\.amdgcn_target' -e 'file format elf64-amdgpu' "$file"; then
    for config in 023 227 267; do add_seed "$config" "$file"; done
  fi
done < <(find "$root/tests/cli" -mindepth 3 -type f -not -path '*/expected_files/*' -print0; \
         find "$root/tests/corpus" "$root/examples" -type f -name '*.isa' -print0; \
         find "$root/tests/fixtures" -type f -print0 2>/dev/null)
if [ -d "$root/tests/fuzz/regressions" ]; then
  cp "$root/tests/fuzz/regressions/"* "$seeds/" 2>/dev/null || true
fi
echo "Seeds: $(find "$seeds" -type f | wc -l) files in $seeds"

args=(-max_len=8192 -timeout=10 -rss_limit_mb=2048 -max_total_time="$seconds"
      -artifact_prefix="$work/artifacts/" -print_final_stats=1 -print_funcs=0
      -dict="$root/tests/fuzz/vesk.dict")
if [ "$jobs" -gt 1 ]; then
  args+=(-fork="$jobs")
fi
if [ "${VESK_FUZZ_KEEP_GOING:-0}" = 1 ]; then
  [ "$jobs" -gt 1 ] || args+=(-fork=1)
  args+=(-ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1)
fi
# shellcheck disable=SC2086
exec nice -n 10 "$build/tests/fuzz/vesk_fuzz" "${args[@]}" ${VESK_FUZZ_ARGS:-} \
  "$work/corpus" "$seeds"
