#!/usr/bin/env bash
# Which lines of the library the tests run, by folder, and every line that they do not run. Fails
# where a folder has less than 95 %.
#   scripts/coverage.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/setup.sh

need_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" gcovr
configure_and_build coverage
find build/coverage -name '*.gcda' -delete
ctest --test-dir build/coverage --output-on-failure --parallel "$(nproc)" >build/coverage/tests.log ||
  { cat build/coverage/tests.log; exit 1; }

status=0
for folder in shared host usb families parallel editors; do
  echo "== $folder"
  gcovr --root . --object-directory build/coverage --filter "$folder/" --exclude host/com/ \
    --fail-under-line 95 build/coverage || status=1
done
exit $status
