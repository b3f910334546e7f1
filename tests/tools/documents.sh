#!/bin/bash
# documents.sh TOOL DOCUMENTS: the man pages and the completion that the build has made of the tables
# of options, in the folder DOCUMENTS.
tool=$1 documents=$2 failed=0
fault() {
    echo "$*"
    failed=1
}

commands=$("$tool" --help | sed -n '/^Subcommands:/,/^[^ ]*ravolt COMMAND/ s/^  \([a-z]*\) .*/\1/p')
[ "$(wc -w <<<"$commands")" -ge 5 ] || fault "the help has the commands $commands"

# --- man pages
for page in ravolt $(sed 's/^/ravolt-/' <<<"$commands"); do
    file=$documents/$page.1
    [ -s "$file" ] || { fault "$page.1 is missing"; continue; }
    mandoc -T lint -W warning "$file" | grep -v 'missing date' >lint && fault "$(cat lint)"
    mandoc -T utf8 "$file" | col -b >"$page.txt"
done
grep -q 'ravolt-convert(1)' ravolt.txt || fault "ravolt.1 refers to no page of a command"
for command in $commands; do
    for option in $("$tool" "$command" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'); do
        grep -qE -- "(^|[ ,])$option( |,|$)" "ravolt-$command.txt" || fault "ravolt-$command.1 has no $option"
    done
done
grep -q 'Exit codes: 0 done' ravolt-convert.txt || fault "ravolt-convert.1 has no exit codes"

# --- completion
bash -n "$documents/ravolt" || fault "the completion is no script of bash"
source "$documents/ravolt"
complete -p ravolt | grep -q -- '-F _ravolt' || fault "no completion for ravolt"

# expect WORDS -- COMMAND LINE: what completes its last word.
expect() {
    local wanted=$1
    shift 2
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    _ravolt
    [ "${COMPREPLY[*]}" = "$wanted" ] || fault "'$*' is completed by '${COMPREPLY[*]}', not '$wanted'"
}
mkdir -p folder/inner
touch file
expect "shot" -- ravolt sh
expect "$(echo $commands) --help --version" -- ravolt ""
expect "--jobs" -- ravolt convert m.obj --jo
expect "y z" -- ravolt convert m.obj --up ""
expect "opaque" -- ravolt convert --alpha op
expect "1 16" -- ravolt shot m.obj --samples 1
expect "folder" -- ravolt convert --textures f
expect "" -- ravolt convert fi # files are bash's default
expect "--samples" -- ravolt shot --sa
expect "--spot-yaw --spot-pitch --spot-distance --spot-angle --spot-fade" -- ravolt view m.obj --spot-
exit $failed
