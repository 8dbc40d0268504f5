#!/usr/bin/env bash
# browser.sh NORVIK-LOG WORK-FOLDER: writes a page of a log and searches it in Chromium, by its text box and its choice
# of level. The console must stay empty, nothing may be loaded, and the page must not be wider than the window. If there
# is no Chromium, it ends with 77, which ctest counts as a skipped test.
set -u
reader=$1 work=$2

command -v chromium >/dev/null || { echo "chromium is not installed"; exit 77; }

rm -rf "$work"
mkdir -p "$work/home"
cd "$work" || exit 1
failed=0
fail() { echo "FAILED: $*"; failed=1; }

{
  echo '2021-05-10T13:00:00.000Z ERROR   [main:7] a.cpp:1  <script>console.error("complaint")</script> first'
  echo '2021-05-10T13:00:01.000Z WARN    [main:7] a.cpp:2  Zoë\nSmith </pre></li> second'
  echo '2021-05-10T13:00:02.000Z INFO    [main:7] a.cpp:3  <img src="http://127.0.0.1:9/x.png"> third'
  printf '2021-05-10T13:00:03.000Z DEBUG   [main:7] a.cpp:4  %s\n' "$(printf 'x%.0s' $(seq 1 3000))"
  echo '2021/05/10 14:00:04:000  no level, fourth'
} >pay.log
TZ=Europe/London "$reader" pay.log --html page.html || fail "no page was written"

# The page with a script after it that drives it by the functions that a user's typing calls. The page's policy is
# checked in the original page.
grep -q "default-src 'none'" page.html || fail "the page may load something"
sed '/<\/html>/d' page.html >driven.html
cat >>driven.html <<'HTML'
<script>
const seen = [], box = document.getElementById("text"), choice = document.getElementById("level");
const note = name => seen.push(`seen ${name}: ${[...document.querySelectorAll("li")].map(line => line.getClientRects().length ? 1 : 0).join("")} ${document.getElementById("count").textContent}`);
const type = (name, words, flag) => {
  box.value = words; box.dispatchEvent(new Event("input"));
  choice.value = flag; choice.dispatchEvent(new Event("change"));
  note(name);
};
note("all");
type("text", "SMITH", "");
type("level", "", "2");
type("both", "first", "1");
type("none", "nothing of this", "");
type("again", "", "");
seen.push(`seen width: ${document.documentElement.scrollWidth <= innerWidth ? "fits" : "too wide"}`);
seen.push(`seen images: ${document.images.length} scripts: ${document.scripts.length}`);
document.body.textContent = seen.join("\n");
</script>
</html>
HTML

HOME=$work/home timeout 120 chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --window-size=400,800 \
  --user-data-dir="$work/profile" --enable-logging=stderr --dump-dom "file://$work/driven.html" >dom.txt 2>browser.log
grep -o 'seen [^<]*' dom.txt >seen.txt
cat >expected.txt <<'TEXT'
seen all: 11111 5 of 5 messages
seen text: 01000 1 of 5 messages
seen level: 11000 2 of 5 messages
seen both: 10000 1 of 5 messages
seen none: 00000 0 of 5 messages
seen again: 11111 5 of 5 messages
seen width: fits
seen images: 0 scripts: 2
TEXT
diff expected.txt seen.txt || { tail -n 5 browser.log; fail "the page does not show what was asked for"; }
grep ':CONSOLE' browser.log && fail "the page complained"

[ "$failed" -eq 0 ] && echo "5 messages, searched by text and by level"
exit "$failed"
