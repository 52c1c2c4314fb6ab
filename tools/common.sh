# Sourced by the other tools: finds the project and installs what it needs.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C.UTF-8

fail() {
  echo "$(basename "$0"): $*" >&2
  exit 1
}

say() {
  printf '\n== %s\n' "$*"
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo > /dev/null; then
    sudo "$@"
  else
    fail "packages are missing; run as root or install sudo"
  fi
}

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2> /dev/null)" = installed ]
}

# Installs the given Debian packages if they are missing.
need_packages() {
  command -v dpkg-query > /dev/null || fail "not a Debian system; install by hand: $*"
  local package missing=()
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  if [ "${#missing[@]}" -eq 0 ]; then return; fi
  say "Installing ${missing[*]}"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" > /dev/null
}

# Installs what a build needs.
need_build_tools() {
  need_packages cmake ninja-build g++ libcli11-dev nlohmann-json3-dev help2man
}

# Installs what building and running the tests needs: the test framework, and other programs that
# read archives.
need_test_tools() {
  need_build_tools
  # Compilers for the stubs of self-extracting programs, and an emulator to run one.
  need_packages g++-mingw-w64-x86-64-posix g++-aarch64-linux-gnu qemu-user-static
  need_packages libgtest-dev libgmock-dev pkg-config python3 attr lhasa 7zip libarchive-tools jlha-utils
  # Headers that define names of ours, too.
  need_packages libncurses-dev libjpeg-dev libglib2.0-dev unixodbc-dev x11proto-dev
}

# quietly LOG COMMAND...: runs a command and shows its output only if it fails.
quietly() {
  local log=$1
  shift
  mkdir -p "$(dirname "$log")"
  if ! "$@" > "$log" 2>&1; then
    tail -n 100 "$log"
    fail "failed: $*"
  fi
}

# build PRESET [CMAKE-OPTION...]: configures and builds into build/PRESET.
build() {
  local preset=$1
  shift
  say "Building ($preset)"
  quietly "build/$preset/configure.log" cmake --preset "$preset" "$@"
  quietly "build/$preset/build.log" cmake --build --preset "$preset"
}

# build_targets PRESET TARGET...: the same for some targets only.
build_targets() {
  local preset=$1
  shift
  say "Building ($preset: $*)"
  quietly "build/$preset/configure.log" cmake --preset "$preset"
  quietly "build/$preset/build.log" cmake --build --preset "$preset" --target "$@"
}

# run_tests PRESET: runs all tests of a build and prints a summary: failures, and skipped tests with
# their reasons.
run_tests() {
  local preset=$1 log=build/$1/tests.log status=0
  say "Testing ($preset)"
  ctest --preset "$preset" --parallel "$(nproc)" > "$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ]; then
    grep -v -E '^ *(Start +[0-9]+:|[0-9]+/[0-9]+ Test +#.*( Passed |\*\*\*Skipped))' "$log" || true
    fail "tests failed; the whole log is $log"
  fi
  sed -n '/tests passed/,$p' "$log" | sed '/^Label Time/,$d'
  echo "Reasons for skipping, if any:"
  grep -h -A 1 ': Skipped$' "build/$preset/Testing/Temporary/LastTest.log" |
    grep -v -e ': Skipped$' -e '^--$' | sort | uniq -c || true
}
