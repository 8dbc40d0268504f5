#!/usr/bin/env bash
# links.sh CHECKER WORK-FOLDER: which links tools/links accepts, and which it names.
set -euo pipefail
checker=$1 work=$2

rm -rf "$work"
mkdir -p "$work/docs"
cd "$work"
# expect STATUS LINE...: what the checker says of the pages.
expect() {
  local status=$1 said actual=0
  shift
  said=$("$checker" README.md docs) || actual=$?
  diff <(printf '%s\n' "$@") <(printf '%s\n' "$said")
  [ "$actual" -eq "$status" ] || { printf 'status %d, expected %d\n' "$actual" "$status"; exit 1; }
}

cat >README.md <<'END'
# The `library`, a first look

[a page](docs/a.md), [its part](docs/a.md#pay-the-staff-again), [here](#the-library-a-first-look), [away](https://e.org)
<img src="docs/a%20picture.png" srcset="docs/a%20picture.png 2x, docs/p.html">
[![picture](docs/a%20picture.png)](docs/p.html#x.y-2) `[code](no.md)`

```sh
echo [code](no.md)
```
[reference]: docs/a.md
END
cat >docs/a.md <<'END'
# A
## Pay the staff
## Pay the staff, again!
## Pay the staff
[back](../README.md) [second](#pay-the-staff-1)
END
echo '<p id="x.y-2"><a href="a.md">a</a> <a href="#x.y-2">b</a> <a href="mailto:x">c</a>' >docs/p.html
touch 'docs/a picture.png'
expect 0 'links: 15 links, 0 of them lead nowhere'

sed -i 's/## Pay the staff, again!/## Pay nobody/' docs/a.md
sed -i 's/#x.y-2">b/#x.y">b/' docs/p.html
rm 'docs/a picture.png'
picture='README.md: docs/a%20picture.png: no such file'
expect 1 "$picture" "$picture" "$picture" \
  'README.md: docs/a.md#pay-the-staff-again: no such anchor' 'docs/p.html: #x.y: no such anchor' \
  'links: 15 links, 5 of them lead nowhere'
