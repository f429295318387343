#!/bin/sh
# usage: manual.sh QVX VERSION: prints the manual page of the tool, made of what its --help and that of its subcommands say.
set -eu
export LC_ALL=C.UTF-8

# roff: turns a help text into the inside of a section. A line that begins at the margin is text, or the heading of a table
# when it ends with a colon; lines of tables are indented, with two spaces at least between what and its meaning.
roff() {
    awk '
        function escaped(text) {
            gsub(/\\/, "\\e", text)
            gsub(/-/, "\\-", text)
            return text ~ /^[.'"'"']/ ? "\\&" text : text
        }
        { sub(/\{false\}/, "") }                                     # how CLI11 marks flags that switch off
        /--jobs/ { sub(/=[0-9]+/, "") }                              # the default is that of the machine
        NR == 1 { print escaped($0) "."; next }
        /^Usage: / { print ".PP\n.B " escaped(substr($0, 8)); next }
        /^$/ { gap = 1; next }
        /^[A-Z][a-z ]*:$/ { print ".SS " substr($0, 1, length($0) - 1); gap = 0; intable = 1; next }
        /^  [^ ]/ && intable {
            line = substr($0, 3)
            at = match(line, /  +/)
            if (!at && substr(line, 28, 1) == " ") {                 # a name that fills its column
                at = 28
                RLENGTH = 1
            }
            print ".TP\n.B " escaped(at ? substr(line, 1, at - 1) : line)
            if (at) print escaped(substr(line, at + RLENGTH))
            next
        }
        /^ / { sub(/^ +/, ""); print escaped($0); next }
        { if (gap || intable) print ".PP"; gap = intable = 0; print escaped($0) }'
}

summary=$("$1" --help | sed -n '1s/\.$//p')
cat <<END
.TH QVX 1 "" "qvxsys $2" "User Commands"
.SH NAME
qvx \\- $(printf %.1s "$summary" | tr '[:upper:]' '[:lower:]')${summary#?}
.SH SYNOPSIS
.B qvx
[OPTIONS] SUBCOMMAND
.SH DESCRIPTION
END
"$1" --help | sed '1s/\.$//; /^Usage:/d' | roff
for command in $("$1" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]*\) .*/\1/p'); do
    echo ".SH QVX $command" | tr '[:lower:]' '[:upper:]'
    "$1" "$command" --help | roff
done
