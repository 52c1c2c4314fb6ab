# Sourced by tools/test after common.sh: builds for Windows and runs tests under Wine.
# shellcheck shell=bash

# need_windows_tools PRESET
need_windows_tools() {
  need_test_tools
  need_packages googletest wine64 wine locales
  if [ "$1" = windows-x86 ]; then need_packages g++-mingw-w64-i686-posix; fi
  make_locale /
}

# make_locale ROOT: Wine takes its code page from the locale.
make_locale() {
  if chroot "$1" locale -a 2> /dev/null | grep -qi '^ja_JP.utf-\?8$'; then return; fi
  as_root sed -i 's/^# *ja_JP.UTF-8/ja_JP.UTF-8/' "$1/etc/locale.gen"
  as_root chroot "$1" locale-gen > /dev/null
}

# Where Wine runs: nothing, or the command that begins one in a Debian system for i386.
wine_place=()

# Finds a Wine for 32-bit programs: the system's, or one in a folder of Debian for i386, which takes
# some minutes and a gigabyte.  Returns 1 if there is none and none can be made.
find_wine32() {
  local root=${KOZOR_DEBIAN_I386:-$PWD/build/debian-i386}
  if [ -x /usr/lib/wine/wine ]; then return; fi
  if [ "$(id -u)" -ne 0 ]; then return 1; fi
  if [ ! -x "$root/usr/lib/wine/wine" ]; then
    need_packages debootstrap
    say "Making $root"
    rm -rf "$root"
    local packages=wine32,wine,locales,diffutils,findutils,lhasa,7zip,libarchive-tools,jlha-utils
    debootstrap --arch=i386 --variant=minbase --include="$packages" \
      "$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)" "$root" > "$root.log" 2>&1 || return 1
  fi
  make_locale "$root"
  # The folders of this system that the tests use; programs for x86-64 run there as well.
  # shellcheck disable=SC2016  # the inner shell expands
  wine_place=(unshare --mount -- sh -ec 'root=$1
    shift
    for folder in /proc /dev /tmp "$PWD" /usr/lib/x86_64-linux-gnu /lib64; do
      mkdir -p "$root$folder"
      mount --rbind "$folder" "$root$folder"
    done
    exec chroot "$root" env --chdir "$PWD" "$@"' sh "$root")
}

# with_wine COMMAND...: runs it with a temporary Wine prefix in code page 932.  As root, runs it as
# an ordinary user, because root is refused less, if such a user can read this folder.
with_wine() {
  local home status=0
  home=$(mktemp -d /tmp/kozor-wine-XXXXXX)
  chmod 755 "$home"
  mkdir "$home/files" "$home/prefix"
  local as=()
  if [ "$(id -u)" -eq 0 ]; then
    as=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
    if "${as[@]}" test -r "$PWD/README.md"; then chown -R nobody "$home"; else as=(); fi
  fi
  local wine=("${wine_place[@]}" "${as[@]}" env HOME="$home" WINEPREFIX="$home/prefix" WINEDEBUG=-all
    LC_ALL=ja_JP.UTF-8 DISPLAY= WINEDLLOVERRIDES="mscoree=;mshtml="
    KOZOR_TEST_DIRECTORY="Z:${home//\//\\}\\files")
  # Wine's server stays between the tests, and ends with the last command here.
  "${wine[@]}" wineserver --persistent=60
  "${wine[@]}" wine wineboot --init > "$home.log" 2>&1 || fail "Wine doesn't start"
  "${wine[@]}" "$@" || status=$?
  "${wine[@]}" wineserver --kill || true
  rm -rf "$home" "$home.log"
  return "$status"
}

# check_exports PRESET: the archiver exports its thirteen undecorated names, and needs the system alone.
check_exports() {
  local file=build/$1/bin/UNLHA32.DLL table names others
  say "Exports of UNLHA32.DLL ($1)"
  table=$(x86_64-w64-mingw32-objdump -p "$file")
  names=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[.* //p' <<< "$table" | sort)
  others=$(sed -n 's/^\tDLL Name: //p' <<< "$table" | grep -vixE 'kernel32.dll|user32.dll|msvcrt.dll' || true)
  diff <(sed -n 's/^  \(Unlha[A-Za-z]*\).*/\1/p' engine/api/Unlha32.def | sort) <(echo "$names") ||
    fail "$file exports other names"
  if [ -n "$others" ]; then fail "$file needs $others"; fi
}

# run_windows_tests PRESET PATTERNS: runs the test programs of a Windows build whose names match, and
# tests/exchange with both builds.
run_windows_tests() {
  local build=build/$1 log=build/$1/tests.log
  say "Testing ($1, under Wine)"
  if ! with_wine tests/exchange/run_programs "$PWD/$build" "$2" > "$log" 2>&1; then
    tail -n 100 "$log"
    fail "tests failed; the whole log is $log"
  fi
  grep -E '^(== |\[  (PASSED|SKIPPED) )' "$log"
  echo "Reasons for skipping, if any:"
  tr -d '\r' < "$log" | grep -A 1 ': Skipped$' | grep -v -e ': Skipped$' -e '^--$' | sort | uniq -c || true
  with_wine tests/exchange/exchange "$PWD/build/release/bin" "$PWD/$build/bin" "$1"
}
