# benchmark_table.awk - Google Benchmark's CSV files to one table: subject, ours, each peer, ratio.
#
# A benchmark is named <subject>/ours[/...] or <subject>/<peer>[/...]; one without a peer stands alone.
BEGIN { FS = "," }
/^"/ {
  name = $1
  gsub(/"/, "", name)
  if (name ~ /_(mean|stddev|cv|max|min)$/ || $3 == "") next
  sub(/_median$/, "", name)
  nanoseconds = $3 + 0
  if ($5 == "us") nanoseconds *= 1e3
  if ($5 == "ms") nanoseconds *= 1e6
  if ($5 == "s") nanoseconds *= 1e9
  slash = index(name, "/")
  subject = slash ? substr(name, 1, slash - 1) : name
  who = slash ? substr(name, slash + 1) : "ours"
  rest = ""
  if (match(who, /\/.*/)) { rest = substr(who, RSTART); who = substr(who, 1, RSTART - 1) }
  subject = subject rest
  if (!(subject in seen)) { seen[subject] = 1; order[++subjects] = subject }
  time[subject, who] = nanoseconds
  if (who != "ours" && !((subject, who) in known)) { known[subject, who] = 1; peers[subject] = peers[subject] " " who }
}
function text(nanoseconds) {
  if (nanoseconds >= 1e6) return sprintf("%.2f ms", nanoseconds / 1e6)
  if (nanoseconds >= 1e4) return sprintf("%.2f us", nanoseconds / 1e3)
  return sprintf("%.1f ns", nanoseconds)
}
END {
  printf "%-44s %12s   %-28s %12s %12s\n", "subject", "ours", "peer", "its time", "peer / ours"
  for (i = 1; i <= subjects; i++) {
    subject = order[i]
    ours = ((subject, "ours") in time) ? time[subject, "ours"] : 0
    count = split(peers[subject], list, " ")
    if (count == 0) printf "%-44s %12s\n", subject, text(ours)
    for (p = 1; p <= count; p++) {
      peer = time[subject, list[p]]
      printf "%-44s %12s   %-28s %12s %12s\n", subject, ours ? text(ours) : "-", list[p], text(peer),
             ours ? sprintf("%.2f", peer / ours) : "-"
    }
  }
}
