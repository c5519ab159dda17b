# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# The commands of a page and what it says that they print. Sourced.
#
#   blocks_of PAGE DIRECTORY      blocks "sh" into files NUMBER.sh and the block "text" that follows one into NUMBER.text;
#                                 NUMBER is the line of the page where the commands begin
#   matches EXPECTED PRINTED      whether a file is as another says, where a line "..." stands for any lines, and "..."
#                                 within a line for any text

blocks_of() {
    awk -v to="$2" '
        /^```sh$/   { file = sprintf("%s/%05d.sh", to, NR + 1); last = NR + 1; next }
        /^```text$/ { file = sprintf("%s/%05d.text", to, last); next }
        /^```/      { file = ""; next }
        file        { print > file }
    ' "$1"
}

matches() {
    awk '
        function quoted(text) { gsub(/[][\\.*^$+?(){}|]/, "\\\\&", text); return text }
        function pattern(line,    parts, count, i, whole) {
            count = split(line, parts, /\.\.\./)
            whole = "^"
            for (i = 1; i <= count; ++i) whole = whole (i > 1 ? ".*" : "") quoted(parts[i])
            return whole "$"
        }
        # Whether the expected lines from i on are what is printed from j on.
        function same(i, j) {
            while (i <= wanted) {
                if (expected[i] == "...") {
                    for (; j <= lines + 1; ++j)
                        if (same(i + 1, j)) return 1
                    return 0
                }
                if (j > lines || printed[j] !~ pattern(expected[i])) return 0
                ++i
                ++j
            }
            return j == lines + 1
        }
        NR == FNR && FILENAME == ARGV[1] { expected[++wanted] = $0; next }
        { printed[++lines] = $0 }
        END { exit !same(1, 1) }
    ' "$1" "$2"
}
