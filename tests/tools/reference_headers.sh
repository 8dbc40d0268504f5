#!/usr/bin/env bash
# reference_headers.sh TOOLS-FOLDER: what the reference shows of a header with every kind of declaration.
set -euo pipefail
tools=$1/reference sample=$(dirname "$0")/reference

prepared() {
  python3 -B - "$tools" "$sample/Payment.h" <<'PYTHON'
import sys
sys.path.insert(0, sys.argv[1])
import comments
import headers
comments.links["Receipt.h"] = "topic_values_Receipt"
with open(sys.argv[2], encoding="utf-8") as file:
    page = headers.Page("NorvikCore/values/Payment.h", file.read(), "chapter_values")
page.write()
print("\n".join(page.lines))
PYTHON
}

diff "$sample/Payment.expected" <(prepared)
