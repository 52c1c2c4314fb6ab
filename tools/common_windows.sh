# Sourced by tools/test after common.sh: builds for Windows and runs tests under Wine.
# shellcheck shell=bash

need_windows_tools() {
  need_test_tools
  need_packages g++-mingw-w64-x86-64-posix googletest wine64 wine locales
  if ! locale -a | grep -qi '^ja_JP.utf-\?8$'; then
    as_root sed -i 's/^# *ja_JP.UTF-8/ja_JP.UTF-8/' /etc/locale.gen
    as_root locale-gen > /dev/null
  fi
}

# with_wine COMMAND...: runs it with a temporary Wine prefix in code page 932.  As root, runs it as
# an ordinary user, because root is refused less, if such a user can read this folder.
with_wine() {
  local home status=0
  home=$(mktemp -d)
  chmod 755 "$home"
  mkdir "$home/files" "$home/prefix"
  local as=()
  if [ "$(id -u)" -eq 0 ]; then
    as=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
    if "${as[@]}" test -r "$PWD/README.md"; then chown -R nobody "$home"; else as=(); fi
  fi
  local wine=(env HOME="$home" WINEPREFIX="$home/prefix" WINEDEBUG=-all LC_ALL=ja_JP.UTF-8 DISPLAY=
    WINEDLLOVERRIDES="mscoree=;mshtml=" KOZOR_TEST_DIRECTORY="Z:${home//\//\\}\\files")
  # Wine's server stays between the tests, and ends with the last command here.
  "${as[@]}" "${wine[@]}" wineserver --persistent=60
  "${as[@]}" "${wine[@]}" wine wineboot --init > "$home.log" 2>&1 || fail "Wine doesn't start"
  "${as[@]}" "${wine[@]}" "$@" || status=$?
  "${as[@]}" "${wine[@]}" wineserver --kill || true
  rm -rf "$home" "$home.log"
  return "$status"
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
  grep -h -A 1 ': Skipped$' "$log" | grep -v -e ': Skipped$' -e '^--$' | sort | uniq -c || true
  with_wine tests/exchange/exchange "$PWD/build/release/bin/kozor" "$PWD/$build/bin/kozor.exe"
}
