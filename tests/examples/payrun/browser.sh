#!/usr/bin/env bash
# browser.sh PAYRUN WORK-FOLDER: opens payslips in Chromium at the width of a phone and at the width of a screen, and
# prints them. No page may be wider than the window, the console must stay empty, and each payslip must be one sheet of
# A4 with its name on it. If there is no Chromium or no pdfinfo, it ends with 77, which ctest counts as a skipped test.
set -u
payrun=$1 work=$2

for program in chromium pdfinfo pdftotext; do
  command -v "$program" >/dev/null || { echo "$program is not installed"; exit 77; }
done

rm -rf "$work"
mkdir -p "$work/in" "$work/home"
cd "$work" || exit 1
failed=0
fail() { echo "FAILED: $*"; failed=1; }

cat >in/employer.ini <<'INI'
[employer]
name           = <b>Smith & Sons</b> {net} "Ltd" | £5
paye_reference = 123/GW456
tax_year       = 2024-25
[departments]
OPS = Operations
NIL = Nobody at all
INI

cat >in/employees.csv <<'CSV'
employee,name,department,sort_code,account,address
E1,"<script>alert(""x"")</script> & Co",OPS,12-34-56,12345678,"1 <b>High</b> Street, Town"
E2,王小明 （ワン・シャオミン）,OPS,12-34-56,12345678,"台灣台北市中正區重慶南路一段122號, Taipei"
E3,محمد بن عبد الله العلي,OPS,12-34-56,12345678,"شارع الملك, الرياض"
E4,Zoë Ångélę Nguyễn,OPS,12-34-56,12345678,"Llanfairpwllgwyngyllgogerychwyrndrobwllllantysiliogogogoch, Ynys Môn"
../..,Maximiliana Alexandrina Theodora Featherstonehaugh-Cholmonde,OPS,12-34-56,12345678,
E6,Forty Items,OPS,12-34-56,12345678,
E7,Below Zero,OPS,12-34-56,12345678,
E8,xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx,OPS,12-34-56,12345678,
E9,No Items,OPS,12-34-56,12345678,
CSV

{
  echo employee,date,kind,description,amount
  for employee in E1 E2 E3 E4 ../..; do
    echo "$employee,2024-04-28,pay,Salary <i>of</i> {net} & more,\"12,345.67\""
    echo "$employee,2024-04-28,deduction,PAYE and National Insurance,345.67"
  done
  for item in $(seq 1 30); do echo "E6,2024-04-28,pay,\"Shift $item, night rate with a longer description\",$item.50"; done
  for item in $(seq 1 10); do echo "E6,2024-04-28,deduction,Deduction number $item,$item.25"; done
  echo E7,2024-04-28,deduction,Season ticket loan,4321.00
  echo E8,2024-04-28,pay,yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy,999999999.99
} >in/items.csv

HOME=$work/home "$payrun" --input in --month 1 --logs logs --html html --output report.txt 2>payrun.err ||
  { cat payrun.err; fail "the payslips were not written"; exit 1; }

# The pages get names that need no encoding in an address.
pages=()
for page in html/*.html; do
  pages+=("page${#pages[@]}")
  cp "$page" "${pages[-1]}.html"
done
[ "${#pages[@]}" -eq 9 ] || fail "${#pages[@]} pages instead of 9"

# Two faulty pages that must be detected, to show that the checks work.
echo '<!DOCTYPE html><div style="width: 2000px">wide</div>' >wide.html
echo '<!DOCTYPE html><script>console.error("complaint")</script>' >complaint.html

# browse ARGUMENT...: Chromium without a window.
browse() {
  HOME=$work/home timeout 120 chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --disable-dev-shm-usage \
    --allow-file-access-from-files --user-data-dir="$work/profile" --enable-logging=stderr "$@"
}

# measure PAGE...: prints a line "PAGE WINDOW-WIDTH WIDTH" for each page at each width, and writes the complaints of
# pages to console.log.
measure() {
  {
    echo '<!DOCTYPE html><body>'
    for page in "$@"; do
      for width in 360 1280; do echo "<iframe id=\"$page\" src=\"$page.html\" style=\"border: 0; width: ${width}px\"></iframe>"; done
    done
    cat <<'HTML'
<script>
onload = () => {
  document.body.textContent = [...document.querySelectorAll("iframe")].map(frame => {
    const root = frame.contentDocument.documentElement;
    return `measured ${frame.id} ${root.clientWidth} ${root.scrollWidth}\n`;
  }).join("");
};
</script>
HTML
  } >measure.html
  browse --window-size=1400,1000 --dump-dom "file://$work/measure.html" 2>browser.log | sed -n 's/^.*measured //p' >measured.txt
  grep ':CONSOLE' browser.log >console.log
}

measure wide complaint
awk '$1 == "wide" && $3 > $2' measured.txt | grep -q . || fail "a page that is too wide was not found"
grep -q complaint console.log || fail "a page's complaint was not found"

measure "${pages[@]}"
[ "$(wc -l <measured.txt)" -eq 18 ] || { cat browser.log; fail "$(wc -l <measured.txt) measured pages instead of 18"; }
while read -r page window width; do
  [ "$width" -le "$window" ] || fail "$page is $width pixels wide in a window of $window"
done <measured.txt
[ ! -s console.log ] || { cat console.log; fail "pages complained"; }

for page in "${pages[@]}"; do
  browse --no-pdf-header-footer --print-to-pdf="$work/$page.pdf" "file://$work/$page.html" >/dev/null 2>&1
  pdfinfo "$page.pdf" >info.txt 2>&1 || { cat info.txt; fail "$page was not printed"; continue; }
  grep -q '^Pages: *1$' info.txt || fail "$page is printed on $(sed -n 's/^Pages: *//p' info.txt) sheets"
  grep -q '^Page size:.*A4' info.txt || fail "$page is printed on $(sed -n 's/^Page size: *//p' info.txt)"
  pdftotext "$page.pdf" - 2>/dev/null | tr '\n' ' ' >>printed.txt
done
for text in '<script>alert("x")</script> & Co' '王小明' 'Cholmonde' 'Shift 30, night rate' 'The net pay is below zero.' '999,999,999.99'; do
  grep -qF "$text" printed.txt || fail "'$text' is not on any sheet"
done

[ "$failed" -eq 0 ] && echo "9 payslips: no wider than their windows, no complaint, one sheet each"
exit "$failed"
