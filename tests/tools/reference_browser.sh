#!/usr/bin/env bash
# reference_browser.sh SOURCE-FOLDER LIBRARY WORK-FOLDER HEADER-LIST...: builds the reference pages, checks every link of
# them, and that they name every function that the library exports and a public header declares. Then searches names in
# Chromium and follows the results, and opens every page at the width of a phone. If Doxygen or Chromium is missing, it
# ends with 77, which ctest counts as a skipped test.
set -u
source=$1 library=$2 work=$3
shift 3

for program in doxygen chromium python3; do
  command -v "$program" >/dev/null || { echo "$program is not installed"; exit 77; }
done

rm -rf "$work"
mkdir -p "$work/home"
failed=0
fail() { echo "FAILED: $*"; failed=1; }

# A public class without a sentence is an error, and so is a name that cannot be resolved.
mkdir -p "$work/tree/NorvikCore/values" "$work/tree/examples"
cd "$work/tree" || exit 1
printf '# values\n\nPlain values.\n' >NorvikCore/values/README.md
echo 'int main() {}' >examples/readme_example.cpp
echo NorvikCore/values/Pay.h >headers.txt
header() {
  printf '%s\n' '// NorvikCore/values/Pay.h - what is paid.' 'namespace norvik {' "$@" '}  // namespace norvik' >NorvikCore/values/Pay.h
  "$source/tools/reference/reference" . out 1.0 headers.txt >out.txt 2>&1
}
header '/// The rest of it.' 'class Rest {};' 'class Pay {};' || { cat out.txt; fail "a header with sentences was refused"; }
[ -s out/html/values/Pay.html ] || fail "no page was written"
header 'class Rest {};' && fail "a class without a sentence was accepted"
grep -q 'NorvikCore/values/Pay.h: Rest has no sentence' out.txt || { cat out.txt; fail "the class without a sentence is not named"; }

cd "$source" || exit 1
tools/reference/reference . "$work" 1.0 "$@" || { fail "the reference was not built"; exit 1; }
cd "$work" || exit 1
"$source/tools/links" html | tail -n 20 >links.txt
grep -q ' 0 of them lead nowhere' links.txt || { cat links.txt; fail "links lead nowhere"; }

# Exported functions outside of classes, as `name` or `kernel::name`.
nm -DC --defined-only "$library" | cut -c20- | grep -oE '^norvik::(kernel::|utf8::)?[A-Za-z_]+[A-Za-z_0-9]*(\[abi:[^]]*\])?\(' |
  sed -E 's/norvik::(.*::)?//; s/\[abi.*//; s/\($//' | sort -u >exported.txt
cat "$@" | (cd "$source" && xargs sed 's|//.*||') | grep -oE '[A-Za-z_][A-Za-z_0-9]*' | sort -u >declared.txt
grep -oE '\["[^"]+"' html/names.js | tr -d '["' | sort -u >named.txt
# Time.h calls wallNanoseconds(), whose header is not installed.
comm -12 exported.txt declared.txt | comm -23 - named.txt | grep -vx wallNanoseconds >missing.txt
[ "$(comm -12 exported.txt named.txt | wc -l)" -gt 300 ] || fail "few exported functions are named"
[ ! -s missing.txt ] || { cat missing.txt; fail "the reference does not name these functions"; }

cat >driven.html <<'HTML'
<!DOCTYPE html><body><iframe id="frame" src="html/index.html" style="width: 1200px; height: 800px; border: 0"></iframe>
<script>
const seen = [], frame = document.getElementById("frame");
const page = () => frame.contentDocument;
const loaded = () => new Promise(done => frame.addEventListener("load", done, {once: true}));
const go = address => { const waiting = loaded(); frame.src = address; return waiting; };
const type = text => {
  const box = page().getElementById("search");
  box.focus();
  box.value = text;
  box.dispatchEvent(new Event("input", {bubbles: true}));
  return box;
};
const press = (box, key) => box.dispatchEvent(new KeyboardEvent("keydown", {key, bubbles: true, cancelable: true}));
const results = () => [...page().querySelectorAll("#results a")].map(link => link.firstChild.data);

// Types a name, follows a result, and notes the page, and whether what it leads to is in view.
const follow = async (text, choose) => {
  const box = type(text), found = results();
  const waiting = loaded();
  choose(box);
  await waiting;
  const title = page().querySelector("h1").textContent;
  const anchor = decodeURIComponent(frame.contentWindow.location.hash.slice(1));
  const target = anchor ? page().getElementById(anchor) : page().querySelector("h1");
  const top = target.getBoundingClientRect().top;
  const place = top > 0 && top < 700 ? "in view" : `at ${top}`;
  seen.push(`seen ${text}: first ${found[0]}, page ${title}, ${anchor || "the whole page"} ${place}`);
};

const run = async () => {
  await follow("nk_currencyStyleString", box => press(box, "Enter"));
  await follow("Decimal", () => page().querySelector("#results a").click());
  await follow("norvik::DDLog::addLogger(", box => press(box, "Enter"));
  await follow("NK_PROP", box => press(box, "Enter"));
  await follow("linq_whereK", box => { press(box, "ArrowDown"); press(box, "ArrowUp"); press(box, "Enter"); });
  await follow("NSDate+Norvik", box => press(box, "Enter"));
  await follow("roundplain", box => press(box, "Enter"));

  const box = type("no name is like this");
  seen.push(`seen nothing: ${results().length} results, ${page().getElementById("results").textContent}`);
  press(box, "Escape");
  seen.push(`seen closed: ${page().getElementById("results").hidden}`);
  type("<b>");
  seen.push(`seen markup: ${page().querySelectorAll("#results b").length} elements`);

  frame.style.width = "360px";
  let wide = 0, count = 0;
  for (const address of addresses) {
    await go(address);
    const root = page().documentElement;
    ++count;
    if (root.scrollWidth > root.clientWidth) { ++wide; seen.push(`seen wide: ${address} ${root.scrollWidth}`); }
  }
  seen.push(`seen width: ${count === addresses.length && count > 200 ? "every page" : count}, ${wide} too wide`);
};
onload = () => run().catch(error => seen.push(`seen error: ${error}`)).finally(() => {
  document.body.textContent = seen.join("\n");
});
</script>
HTML
{
  echo '<script>const addresses = ['
  (cd "$work" && find html -name '*.html' | sort | sed 's/.*/"&",/')
  echo '];</script>'
} >addresses.html
sed -i '1r addresses.html' driven.html

HOME=$work/home timeout 240 chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --window-size=1280,900 \
  --allow-file-access-from-files --user-data-dir="$work/profile" --enable-logging=stderr --virtual-time-budget=600000 \
  --dump-dom "file://$work/driven.html" >dom.txt 2>browser.log
grep -o 'seen [^<]*' dom.txt >seen.txt
cat >expected.txt <<'TEXT'
seen nk_currencyStyleString: first nk_currencyStyleString, page NSDecimalNumber+Norvik, nk_currencyStyleString in view
seen Decimal: first Decimal, page Decimal, the whole page in view
seen norvik::DDLog::addLogger(: first addLogger, page DDLog, DDLog.addLogger in view
seen NK_PROP: first NK_PROPERTY, page ObjectMacros, NK_PROPERTY in view
seen linq_whereK: first linq_whereKey, page Chain, linq_whereKey in view
seen NSDate+Norvik: first NSDate+Norvik, page NSDate+Norvik, the whole page in view
seen roundplain: first NSRoundPlain, page NSDecimalNumberHandler, NSRoundingMode in view
seen nothing: 0 results, No such name
seen closed: true
seen markup: 0 elements
seen width: every page, 0 too wide
TEXT
diff expected.txt seen.txt || { tail -n 5 browser.log; fail "the pages do not show what was asked for"; }
grep ':CONSOLE' browser.log && fail "a page complained"

[ "$failed" -eq 0 ] && echo "every link leads somewhere, every name is found"
exit "$failed"
