# benchmark_table.awk - Google Benchmark's CSV files to one table: subject, ours, each peer, ratio.
#
# A benchmark is named <subject>/ours[/...] or <subject>/<peer>[/...]; one without a peer stands alone.
/^"/ {
  match($0, /^"[^"]*"/)
  name = substr($0, 2, RLENGTH - 2)
  split(substr($0, RLENGTH + 2), field, ",")  # iterations, real time, cpu time, unit
  if (name ~ /_(mean|stddev|cv|max|min)$/ || field[2] == "") next
  sub(/_median$/, "", name)
  nanoseconds = field[2] + 0
  if (field[4] == "us") nanoseconds *= 1e3
  if (field[4] == "ms") nanoseconds *= 1e6
  if (field[4] == "s") nanoseconds *= 1e9
  concept = FILENAME
  gsub(/.*\/|_benchmark\.csv$/, "", concept)
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
