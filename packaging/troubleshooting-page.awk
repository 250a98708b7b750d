# Makes the manual page of docs/troubleshooting.md: a paragraph or two, and one table with the columns
# symptom, cause and command.

# Text of Markdown as it may stand anywhere in a line of mdoc.
function text(markdown,    part, i, count, out) {
    gsub(/\\/, "\\e", markdown)
    while (match(markdown, /\[[^]]*\]\([^)]*\)/)) { # of a link its words
        part = substr(markdown, RSTART + 1, RLENGTH - 1)
        sub(/\].*/, "", part)
        markdown = substr(markdown, 1, RSTART - 1) part substr(markdown, RSTART + RLENGTH)
    }
    gsub(/\*\*/, "", markdown)
    count = split(markdown, part_of, "`")
    for (i = 1; i <= count; ++i) {
        part = part_of[i]
        if (i % 2 == 0) {
            gsub(/-/, "\\-", part)
            part = "\\fB" part "\\fR"
        }
        out = out part
    }
    return out
}

# No word is taken for a macro, and no line for a request.
function plain(line) {
    gsub(/ +/, " \\\\\\&", line)
    return "\\&" line
}

function column(number) {
    gsub(/^ +| +$/, "", cells[number])
    return text(cells[number])
}

BEGIN {
    print ".Dd November 22, 2026\n.Dt TARNEXCOMM-TROUBLESHOOTING 7\n.Os TarnexComm"
    print ".Sh NAME\n.Nm tarnexcomm-troubleshooting\n.Nd what is wrong with TarnexComm, and what to do"
    print ".Sh DESCRIPTION"
}
/^# / || /^\|---/ || /^\| symptom/ || !NF { next }
/^\|/ {
    if (!listed++)
        print ".Bl -tag -width Ds"
    split(substr($0, 2), cells, / \| ?/)
    print ".It " plain(column(1)) "\n\\&" column(2) ".\n.Pp\n\\&" column(3)
    next
}
{
    line = "\\&" text($0)
    gsub(/\. /, ".\n\\\\\\&", line) # a new sentence, a new line
    print line
}
END {
    print ".El\n.Sh SEE ALSO\n.Xr Tarnex.ini 5 ,\n.Xr tarnexcomm 8 ,\n.Xr tarnexctl 8"
}
