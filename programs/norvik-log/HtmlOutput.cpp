#include "HtmlOutput.h"

#include "VisibleText.h"

namespace norvik_log {
namespace {

constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Log</title>
<style>
:root { color-scheme: light dark; font: 14px/1.45 system-ui, sans-serif; }
body { margin: 0; }
form { position: sticky; top: 0; display: flex; flex-wrap: wrap; gap: .75em; align-items: center; padding: .6em 1em;
       background: Canvas; border-bottom: 1px solid #8886; }
input { flex: 1 1 12em; min-width: 8em; }
input, select { font: inherit; padding: .25em .5em; }
ol { list-style: none; margin: 0; padding: 0; }
li { display: grid; grid-template-columns: max-content 5.5em 1fr; gap: 0 1em; padding: .25em 1em;
     border-bottom: 1px solid #8883; content-visibility: auto; contain-intrinsic-size: auto 1.9em; }
li[hidden] { display: none; }
time, small { font-variant-numeric: tabular-nums; opacity: .75; }
pre { margin: 0; font: 13px/1.5 ui-monospace, monospace; white-space: pre-wrap; overflow-wrap: anywhere; }
pre small { display: block; }
.l1 b { color: #c62828; } .l2 b { color: #b26a00; } .l4 b { color: #2e7d32; } .l8 b, .l16 b { color: #4a6b8a; }
@media (max-width: 45em) { li { grid-template-columns: max-content 1fr; } pre { grid-column: 1 / -1; } }
</style>
<form>
<input id="text" type="search" placeholder="Text" aria-label="Text" autocomplete="off">
<select id="level" aria-label="Level">
<option value="">every level</option><option value="1">error</option><option value="2">warn and more severe</option>
<option value="4">info and more severe</option><option value="8">debug and more severe</option>
<option value="16">verbose and more severe</option>
</select>
<output id="count"></output>
)";
constexpr std::string_view behindForm = "</form>\n<ol id=\"log\">\n";

constexpr std::string_view foot = R"(</ol>
<script>
"use strict";
const text = document.getElementById("text"), level = document.getElementById("level");
const count = document.getElementById("count"), lines = [...document.getElementById("log").children];
let words = null;
const show = () => {
  words ??= lines.map(line => line.textContent.toLowerCase());
  const wanted = text.value.toLowerCase(), most = Number(level.value);
  let shown = 0;
  lines.forEach((line, i) => {
    const flag = Number(line.dataset.flag);
    const isLevel = !most || (flag > 0 && flag <= most);
    line.hidden = !isLevel || !words[i].includes(wanted);
    shown += !line.hidden;
  });
  count.textContent = `${shown} of ${lines.length} messages`;
};
document.querySelector("form").addEventListener("submit", event => event.preventDefault());
text.addEventListener("input", show);
level.addEventListener("change", show);
show();
</script>
</html>
)";

}  // namespace

void appendHtml(std::string& result, std::string_view text) {
  std::string visible;
  appendVisible(visible, text, LineFeeds::Kept);
  for (const char c : visible) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += c;
    }
  }
}

HtmlOutput::HtmlOutput(const std::filesystem::path& path, const WallClock& clock, std::string_view zone)
    : file_(path), clock_(clock) {
  text_ = head;
  text_ += "<small>times: ";
  appendHtml(text_, zone);
  text_ += "</small>\n";
  text_ += behindForm;
}

void HtmlOutput::add(const Record& record) {
  // Other flags have no position in the order of levels.
  const bool isLevel = record.flag > 0 && record.flag <= 16 && (record.flag & (record.flag - 1)) == 0;
  const std::string flag = std::to_string(isLevel ? record.flag : 0);
  text_ += "<li class=\"l" + flag + "\" data-flag=\"" + flag + "\"><time>";
  if (record.time) text_ += wallTimeText(clock_.wallTime(*record.time));
  text_ += "</time><b>" + levelName(record.flag) + "</b><pre>";
  const std::string_view text = textOf(record, held_);
  if (text.starts_with('\n')) text_ += '\n';  // browsers ignore the first line feed
  appendHtml(text_, text);
  const Names names = namesOf(record);
  text_ += "<small>";
  appendHtml(text_, record.source);
  if (!names.thread.empty()) {
    text_ += " · ";
    appendHtml(text_, names.label + ":" + names.thread);
  }
  if (record.line) {
    text_ += " · ";
    appendHtml(text_, names.file + ":" + std::to_string(*record.line));
  }
  text_ += "</small></pre></li>\n";
  constexpr std::size_t large = 256 << 10;
  if (text_.size() >= large) write();
}

void HtmlOutput::write() {
  file_.write(text_);
  text_.clear();
}

void HtmlOutput::finish() {
  text_ += foot;
  write();
  file_.publish();
}

}  // namespace norvik_log
