#!/bin/sh
# Draws the interface icons anew: a network socket, filled and ticked when the interface is used, an
# empty outline struck through when it is not. They differ in shape and sign, not in colour alone, and
# are twice as large as they are shown. Needs ImageMagick's convert.
set -eu
cd "$(dirname "$0")"
# A socket for a wired plug: its body with the latch's notch below.
socket='polygon 60,90 452,90 452,370 350,370 350,430 162,430 162,370 60,370'
contacts='line 166,130 166,215 line 226,130 226,215 line 286,130 286,215 line 346,130 346,215'
draw() { # FILE FILL EDGE CONTACTS SIGN SIGNCOLOUR
    convert -size 512x512 xc:none \
        -fill "$2" -stroke "$3" -strokewidth 30 -draw "stroke-linejoin round $socket" \
        -fill none -stroke "$4" -strokewidth 26 -draw "stroke-linecap round $contacts" \
        -stroke white -strokewidth 104 -draw "stroke-linecap round stroke-linejoin round $5" \
        -stroke "$6" -strokewidth 60 -draw "stroke-linecap round stroke-linejoin round $5" \
        -resize 96x96 -depth 8 -strip -define png:exclude-chunks=date,time "$1"
}
draw usedinterface.png '#1b5faa' '#0b2c52' white 'polyline 220,350 310,440 460,250' '#0a8f2e'
draw unusedinterface.png '#f4f4f4' '#6a6a6a' '#8a8a8a' 'line 70,440 442,72' '#b3141b'
