#!/usr/bin/env bash
# The same text in every encoding that the text dump knows, by iconv.
set -euo pipefail
cd "$(dirname "$0")"

text=$'Rolle\t7, Szene \xc3\xa9\r\nKlappe \xe2\x82\xac 12 \xe4\xb8\xad\r\n'
printf '\xef\xbb\xbf%s' "$text" >utf8
{ printf '\xff\xfe'; printf '%s' "$text" | iconv -f UTF-8 -t UTF-16LE; } >utf16-little
{ printf '\xfe\xff'; printf '%s' "$text" | iconv -f UTF-8 -t UTF-16BE; } >utf16-big
printf '%s' "$text" | iconv -c -f UTF-8 -t ISO-8859-1 >latin1.edl
printf '<?xml version="1.0"?>\n<clip name="harbour"/>\n' >clip.xml
