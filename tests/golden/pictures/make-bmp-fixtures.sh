#!/bin/sh
# Regenerates the BMP fixtures of picblock_formats_test from plain-text PPM sources.
# Needs ImageMagick's convert (Debian: apt-get install imagemagick); the build and the tests do not.
#
# Sources (pixel values from the formulas below, so they can be checked by eye):
#   rgb5x3.ppm, rgb7x4.ppm  24-bit pictures; odd widths, so BMP rows carry padding (16 and 24 bytes).
#   pal7x3.ppm, pal5x4.ppm  21 and 20 distinct colours: more than 16, so the palette BMPs are 8-bit.
#   runs80x1.ppm            20 colours in runs of 4 pixels: its RLE8 bits (44 bytes) are shorter than
#                           the 80-byte row the header describes.
# Outputs, each source in each header kind:
#   *-core.bmp  BMP2: 12-byte core header (colour table of 3-byte entries).
#   *-info.bmp  BMP3: 40-byte information header (colour table of 4-byte entries), uncompressed.
#   runs80x1-rle8.bmp  BMP3, 8-bit, RLE8-compressed.
set -eu
cd "$(dirname "$0")"

# write_ppm NAME WIDTH HEIGHT: one "r g b" line per pixel, rows top to bottom.
write_ppm() {
    name=$1 w=$2 h=$3
    {
        printf 'P3\n%d %d\n255\n' "$w" "$h"
        y=0
        while [ "$y" -lt "$h" ]; do
            x=0
            while [ "$x" -lt "$w" ]; do
                case $name in
                rgb*) printf '%d %d %d\n' $(( (x * 50 + y * 20 + 5) % 256 )) $(( (x * 30 + y * 70 + 40) % 256 )) \
                          $(( 255 - x * 30 - y * 10 )) ;;
                runs*) c=$((x / 4)); printf '%d %d %d\n' $((c * 12)) $((200 - c * 5)) $((c * 3)) ;;
                pal*) printf '%d %d %d\n' $(( 10 + x * 35 )) $(( 20 + y * 60 )) $(( (x * 7 + y * 13) * 9 % 256 )) ;;
                esac
                x=$((x + 1))
            done
            y=$((y + 1))
        done
    } > "$name.ppm"
}

write_ppm rgb5x3 5 3
write_ppm rgb7x4 7 4
write_ppm pal7x3 7 3
write_ppm pal5x4 5 4
write_ppm runs80x1 80 1

for name in rgb5x3 rgb7x4; do
    convert "$name.ppm" -strip -type TrueColor -compress None "BMP2:$name-core.bmp"
    convert "$name.ppm" -strip -type TrueColor -compress None "BMP3:$name-info.bmp"
done
for name in pal7x3 pal5x4; do
    convert "$name.ppm" -strip +dither -type Palette -compress None "BMP2:$name-core.bmp"
    convert "$name.ppm" -strip +dither -type Palette -compress None "BMP3:$name-info.bmp"
done
convert runs80x1.ppm -strip +dither -type Palette -compress RLE BMP3:runs80x1-rle8.bmp
