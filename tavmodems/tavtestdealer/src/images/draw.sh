#!/bin/sh
# Draws the images anew, smoothly from large drawings; those of the tool buttons in the size in which they
# are shown, since every start of the tool decodes them.
# For a screen in poor light: bold signs with a white rim on strong colours, which differ in shape and
# not in colour alone. Needs ImageMagick's convert.
set -eu
cd "$(dirname "$0")"
round='stroke-linecap round stroke-linejoin round'

finish() { # SIZE FILE, completes a convert of 512x512
    echo "-resize $1 -depth 8 -strip -define png:exclude-chunks=date,time $2"
}

# The Internet indicator: a white sign in a shape.
indicator() { # FILE SHAPE SIGN FILL EDGE
    # shellcheck disable=SC2046
    convert -size 512x512 xc:none \
        -fill white -stroke "$5" -strokewidth 16 -draw "$2" \
        \( -size 512x512 xc:none -fill "$4" -draw "$2" -resize 90% \
            -gravity center -background none -extent 512x512 \) -composite \
        -fill none -stroke white -strokewidth 62 -draw "$round $3" \
        $(finish 64x64 "$1")
}
indicator greenled.png 'circle 256,256 256,10' 'polyline 138,264 224,350 376,172' '#0a8f2e' '#04450f'
indicator redled.png 'polygon 154,10 358,10 502,154 502,358 358,502 154,502 10,358 10,154' \
    'line 168,168 344,344 line 344,168 168,344' '#d3121a' '#5c0000'

# The tool buttons: a sign of its own colour.
sign() { # FILE DRAWING FILL EDGE
    # shellcheck disable=SC2046
    convert -size 512x512 xc:none \
        -fill white -stroke white -strokewidth 84 -draw "$round $2" \
        -fill "$3" -stroke "$4" -strokewidth 28 -draw "$round $2" \
        $(finish 48x48 "$1")
}
sign up.png 'polygon 256,60 452,268 332,268 332,452 180,452 180,268 60,268' '#1b5faa' '#0b2c52'
sign down.png 'polygon 256,452 452,244 332,244 332,60 180,60 180,244 60,244' '#1b5faa' '#0b2c52'
sign remove.png 'polygon 132,60 256,184 380,60 452,132 328,256 452,380 380,452 256,328 132,452 60,380
    184,256 60,132' '#d3121a' '#5c0000'

# A looking glass: its lens keeps light, its handle is the sign's colour.
# shellcheck disable=SC2046
convert -size 512x512 xc:none \
    -stroke white -strokewidth 132 -draw "$round line 340,340 436,436" \
    -fill white -strokewidth 92 -draw 'circle 212,212 212,72' \
    -stroke '#0b2c52' -strokewidth 96 -draw "$round line 340,340 436,436" \
    -fill '#dcecff' -strokewidth 56 -draw 'circle 212,212 212,72' \
    $(finish 48x48 search.png)
