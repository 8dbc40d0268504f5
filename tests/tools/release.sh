#!/usr/bin/env bash
# release.sh TOOLS-FOLDER WORK-FOLDER: two clones of a small project give the same source archive, whatever the time, the
# umask and the user's settings are; a file that differs from the commit, or another version somewhere, is refused.
set -euo pipefail
tools=$1 work=$2

rm -rf "$work"
mkdir -p "$work"/project/{NorvikCore,packaging/debian,tests/install,tools/support}
export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
cd "$work/project"
cp "$tools/release" tools/
cp "$tools/support/steps.sh" tools/support/
echo 'project(NorvikCore VERSION 1.2.3 LANGUAGES CXX)' >CMakeLists.txt
printf '#define NORVIKCORE_VERSION_%s\n' 'MAJOR 1' 'MINOR 2' 'PATCH 3' 'STRING "1.2.3"' >NorvikCore/version.h
printf '# Changelog\n\n## 1.2.3 (2026-05-10)\n\n## 1.2.2 (2026-05-09)\n' >CHANGELOG.md
echo 'norvikcore (1.2.3-1) bookworm; urgency=medium' >packaging/debian/changelog
echo 'find_package(NorvikCore 1.2 REQUIRED)' >tests/install/consumer.cmake
echo /build/ >.gitignore
git init -q
git add -A
commit() { GIT_COMMITTER_DATE='2026-05-10T12:00:00Z' git -c user.name=a -c user.email=a@b commit -q --date 2026-05-10T12:00:00Z "$@"; }
commit -m release
git clone -q . ../first
git clone -q . ../second
find ../second -path ../second/.git -prune -o -type f -exec touch -d 2001-01-01 {} +
git -C ../second config tar.umask 0077
git -C ../second config core.autocrlf true
(umask 002 && TZ=UTC ../first/tools/release --source)
(umask 077 && TZ=Asia/Tokyo ../second/tools/release --source)
cmp ../first/build/dist/norvikcore-1.2.3.tar.gz ../second/build/dist/norvikcore-1.2.3.tar.gz
(cd ../first/build/dist && sha256sum -c SHA256SUMS)
[ "$(TZ=UTC tar -tvf ../first/build/dist/norvikcore-1.2.3.tar.gz norvikcore-1.2.3/CHANGELOG.md |
  awk '{print $1, $4, $5, $6}')" = "-rw-r--r-- 2026-05-10 12:00 norvikcore-1.2.3/CHANGELOG.md" ]

# expect_refusal TEXT
expect_refusal() {
  local said
  if said=$(tools/release --source); then echo "not refused: $1"; exit 1; fi
  grep -qF "$1" <<<"$said" || { printf 'expected: %s\nsaid: %s\n' "$1" "$said"; exit 1; }
}
echo changed >>CHANGELOG.md
expect_refusal 'files differ from the commit'
git checkout -q .
for change in 'NorvikCore/version.h|PATCH 3|PATCH 4|NorvikCore/version.h has no line' \
  'NorvikCore/version.h|"1.2.3"|"1.2.4"|NorvikCore/version.h has no line' \
  "CHANGELOG.md|1.2.3 (2026-05-10)|1.2.3 (unreleased)|CHANGELOG.md does not begin with '## 1.2.3 (DATE)'" \
  'packaging/debian/changelog|1.2.3|1.2.2|packaging/debian/changelog does not begin with version 1.2.3' \
  'tests/install/consumer.cmake|1.2|1.1|tests/install/consumer.cmake has no line'; do
  IFS='|' read -r file from to text <<<"$change"
  sed -i "s/$from/$to/" "$file"
  expect_refusal "$text"
  git checkout -q .
done
