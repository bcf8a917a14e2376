#!/bin/bash
# Checks the manual pages with groff, the help of each command for an example, and the completion by
# asking for some. Prints what is wrong, and exits 1 if anything is.
#
#   check.sh XEL MANUAL-FOLDER
set -u
xel=$1
folder=$2
failed=0
fail() {
  echo "$1"
  failed=1
}

pages=0
for page in "$folder"/man1/*.1; do
  warnings=$(groff -man -ww -z "$page" 2>&1)
  [ -z "$warnings" ] || fail "$warnings"
  for section in NAME SYNOPSIS OPTIONS EXAMPLES 'EXIT STATUS'; do
    grep -qx "\.SH $section" "$page" || fail "$page has no section $section"
  done
  pages=$((pages + 1))
  name=$(basename "$page" .1)
  command=${name#xel}
  "$xel" ${command:+"${command#-}"} --help | grep -qx 'Examples:' || fail "$name: --help has no example"
done
[ $pages -ge 3 ] || fail "there are $pages manual pages"
grep -q '^\\fB\\-\\-seek\\fR \\fIAT:TO\\fR \.\.\.$' "$folder/man1/xel-play.1" ||
  fail "xel-play.1 does not tell what --seek takes"

# shellcheck source=/dev/null
source "$folder/bash-completion/xel"
cd "$(mktemp -d)" || exit 1
trap 'rm -rf "$PWD"' EXIT
touch 'a page.html'
mkdir media

# The words of a command line, of which the last is to be completed, and the completions.
expect() {
  local expected=$1
  shift
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _xel
  local found
  found=$(printf '%s\n' "${COMPREPLY[@]}" | sort | paste -sd '|')
  [ "$found" = "$expected" ] || fail "$*: $found instead of $expected"
}
expect 'play' xel pl
expect 'live|vod' xel play ''
expect '--content-source-id|--convert' xel play vod --con
expect '' xel play live --content
expect 'clock|gstreamer' xel play vod --json --player ''
expect 'clock' xel play vod --player = cl
expect 'clock|gstreamer' xel play vod --player =
expect 'live|vod' xel play --help ''
expect '' xel play live --asset-key ''
expect '--window' xel play live --asset-key vod --win
expect 'a page.html' xel play vod --ca-file a
expect 'media' xel serve --media ''
expect 'a page.html|media' xel replay ''
expect '' xel man
exit $failed
