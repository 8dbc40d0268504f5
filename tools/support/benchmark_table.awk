# benchmark_table.awk - turns Google Benchmark's JSON files, with one key per line, into one table: subject, ours, each
# peer, ratio.
#
# A benchmark is named <subject>/ours[/...] or <subject>/<peer>[/...]; one without a peer has a row of its own. For
# repetitions the median is used.
function value(line) {
  sub(/^[^:]*: */, "", line)
  sub(/,? *$/, "", line)
  gsub(/^"|"$/, "", line)
  return line
}
/^ *"run_name": / {
  name = value($0)
  gsub(/\/(real_time|manual_time|process_time|iterations:[0-9]+|repeats:[0-9]+)/, "", name)  # how it was measured
  aggregate = "median"
  failed = 0
}
/^ *"aggregate_name": / { aggregate = value($0) }
/^ *"error_occurred": true/ { failed = 1 }
/^ *"real_time": / { nanoseconds = value($0) + 0 }
/^ *"time_unit": / {
  if (failed || aggregate != "median") next
  unit = value($0)
  if (unit == "us") nanoseconds *= 1e3
  if (unit == "ms") nanoseconds *= 1e6
  if (unit == "s") nanoseconds *= 1e9
  concept = FILENAME
  gsub(/.*\/|_benchmark\.json$/, "", concept)
  slash = index(name, "/")
  subject = concept ": " (slash ? substr(name, 1, slash - 1) : name)
  who = slash ? substr(name, slash + 1) : "ours"
  rest = ""
  if (match(who, /\/.*/)) { rest = substr(who, RSTART); who = substr(who, 1, RSTART - 1) }
  subject = subject rest
  if (!(subject in seen)) { seen[subject] = 1; order[++subjects] = subject }
  time[subject, who] = nanoseconds
  if (who != "ours" && !((subject, who) in known)) { known[subject, who] = 1; peers[subject] = peers[subject] (peers[subject] ? "|" : "") who }
}
function text(nanoseconds) {
  if (nanoseconds >= 1e6) return sprintf("%.2f ms", nanoseconds / 1e6)
  if (nanoseconds >= 1e4) return sprintf("%.2f us", nanoseconds / 1e3)
  return sprintf("%.1f ns", nanoseconds)
}
END {
  printf "%-52s %12s   %-28s %12s %12s\n", "subject", "ours", "peer", "its time", "peer / ours"
  for (i = 1; i <= subjects; i++) {
    subject = order[i]
    ours = ((subject, "ours") in time) ? time[subject, "ours"] : 0
    count = split(peers[subject], list, "|")
    if (count == 0) printf "%-52s %12s\n", subject, text(ours)
    for (p = 1; p <= count; p++) {
      peer = time[subject, list[p]]
      printf "%-52s %12s   %-28s %12s %12s\n", subject, ours ? text(ours) : "-", list[p], text(peer),
             ours ? sprintf("%.2f", peer / ours) : "-"
    }
  }
}
