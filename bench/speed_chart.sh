#!/usr/bin/env bash
# Draws the table of bench/side_by_side.sh, as its output or the README holds it, as a bar chart:
#
#   bench/speed_chart.sh README.md >docs/speed.svg
#
# One bar a row, as long as our time is beside OpenSSL's; the line stands where both are equal.
set -euo pipefail

awk -F'|' '
function escape(text) {
  gsub(/&/, "\\&amp;", text); gsub(/</, "\\&lt;", text); gsub(/>/, "\\&gt;", text)
  return text
}
function trim(text) { gsub(/^ +| +$|`/, "", text); return text }
function legend(x, class, meaning) {
  printf "<rect x=\"%d\" y=\"36\" width=\"12\" height=\"12\" rx=\"2\" class=\"%s\"/>\n", x, class
  printf "<text x=\"%d\" y=\"46\" class=\"small\">%s</text>\n", x + 18, meaning
}
$6 + 0 > 0 && NF >= 8 {
  work[++rows] = escape(trim($2)); against[rows] = escape(trim($3))
  if (against[rows] == "in process") against[rows] = "the same in process"
  ratio[rows] = $6 + 0
}
END {
  if (rows == 0) { print "speed_chart: no table of ratios" >"/dev/stderr"; exit 1 }
  step = 34; left = 350; unit = 110; widest = 4.4; top = 74; words = left - 56
  width = left + unit * widest + 30; height = top + rows * step + 12
  printf "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" ", width, height
  printf "viewBox=\"0 0 %d %d\" role=\"img\">\n", width, height
  print "<title>Our time beside that of OpenSSL, for the rows of the table</title>"
  print "<style>text{font:13px sans-serif;fill:#1f2328}.small{font-size:11px;fill:#656d76}" \
        ".page{fill:#ffffff}.equal{fill:#2da44e}.slower{fill:#bf8700}" \
        "line{stroke:#656d76;stroke-dasharray:4 3}" \
        "@media(prefers-color-scheme:dark){text{fill:#e6edf3}.small{fill:#9198a1}" \
        ".page{fill:#0d1117}.equal{fill:#3fb950}.slower{fill:#d29922}line{stroke:#9198a1}}</style>"
  printf "<rect width=\"%d\" height=\"%d\" rx=\"6\" class=\"page\"/>\n", width, height
  printf "<text x=\"%d\" y=\"22\">Time, OpenSSL = 1 (the line); shorter is better</text>\n", left
  legend(left, "equal", "faster, or within 5 % of OpenSSL")
  legend(left + 240, "slower", "slower")
  printf "<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\"/>\n", left + unit, top - 12, left + unit, height - 6
  for (i = 1; i <= rows; ++i) {
    y = top + (i - 1) * step
    bar = ratio[i] < widest ? ratio[i] : widest
    printf "<text x=\"%d\" y=\"%d\" text-anchor=\"end\">%s</text>\n", words, y + 10, work[i]
    printf "<text x=\"%d\" y=\"%d\" text-anchor=\"end\" class=\"small\">%s</text>\n", words, y + 24, against[i]
    printf "<rect x=\"%d\" y=\"%d\" width=\"%.1f\" height=\"18\" rx=\"2\" class=\"%s\"/>\n", left, y + 2,
           bar * unit, ratio[i] <= 1.05 ? "equal" : "slower"
    if (ratio[i] > bar) printf "<text x=\"%.1f\" y=\"%d\">…</text>\n", left + bar * unit + 6, y + 16
    printf "<text x=\"%d\" y=\"%d\" text-anchor=\"end\">%.2f</text>\n", left - 8, y + 16, ratio[i]
  }
  print "</svg>"
}' "$@"
