#!/bin/sh
# Draws the indicator's images anew, eight times as large as they are shown so that their edges come
# out smooth: they differ in shape and sign, not in colour alone. Needs ImageMagick's convert.
set -eu
cd "$(dirname "$0")"
draw() { # FILE SHAPE SIGN FILL EDGE
    convert -size 512x512 xc:none \
        -fill white -stroke "$5" -strokewidth 16 -draw "$2" \
        \( -size 512x512 xc:none -fill "$4" -draw "$2" -resize 90% \
            -gravity center -background none -extent 512x512 \) -composite \
        -fill none -stroke white -strokewidth 62 -draw "stroke-linecap round stroke-linejoin round $3" \
        -resize 64x64 -depth 8 -strip -define png:exclude-chunks=date,time "$1"
}
draw greenled.png 'circle 256,256 256,10' 'polyline 138,264 224,350 376,172' '#0a8f2e' '#04450f'
draw redled.png 'polygon 154,10 358,10 502,154 502,358 358,502 154,502 10,358 10,154' \
    'line 168,168 344,344 line 344,168 168,344' '#d3121a' '#5c0000'
