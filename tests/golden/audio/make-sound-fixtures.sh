#!/bin/sh
# Regenerates the wave fixtures of audio_sndblock_test with SoX (Debian: apt-get install sox); the build
# and the tests do not need it.
#
#   mono8-11025.wav     8-bit unsigned mono at 11025 Hz, 551 samples: an odd data size.
#   stereo16-44100.wav  16-bit stereo at 44100 Hz, 300 frames (440 Hz left, 660 Hz right).
#   list-22050.wav      16-bit mono at 22050 Hz, 400 samples, with a LIST chunk between "fmt " and "data".
#   fmt18-22050.wav     the same samples with an 18-byte format chunk (its extra-size word 0).
#   alaw-11025.wav      A-law (format tag 6), as SoX writes it: an 18-byte format chunk and a "fact" chunk.
#   NAME.raw            SoX's own decoding of each PCM file: the sample bytes a reader must deliver.
#
# SoX writes neither LIST chunks nor 18-byte format chunks for PCM, so those two files are SoX's plain
# 16-byte-format file with its chunks rearranged by the byte splicing below. SoX reads both back: their
# .raw files are decoded from the spliced files, not from the plain one.
set -eu
cd "$(dirname "$0")"

# le32 N: N as four little-endian bytes.
le32() {
    printf "$(printf '\\%03o\\%03o\\%03o\\%03o' $(($1 & 255)) $(($1 >> 8 & 255)) $(($1 >> 16 & 255)) $(($1 >> 24 & 255)))"
}
# bytes FILE OFFSET [COUNT]: COUNT bytes of FILE from OFFSET (to the end without COUNT).
bytes() {
    if [ $# -eq 3 ]; then tail -c +$(($2 + 1)) "$1" | head -c "$3"; else tail -c +$(($2 + 1)) "$1"; fi
}

sox -D -r 11025 -c 1 -n -b 8 -e unsigned-integer mono8-11025.wav synth 551s sine 440 vol 0.8
sox -D -r 44100 -c 2 -n -b 16 -e signed-integer stereo16-44100.wav synth 300s sine 440 sine 660 vol 0.7
sox -D -r 11025 -c 1 -n -e a-law alaw-11025.wav synth 200s sine 440

# plain.wav: "RIFF" size "WAVE" (12 bytes), "fmt " chunk of 16 (24 bytes), "data" chunk (from byte 36).
sox -D -r 22050 -c 1 -n -b 16 -e signed-integer plain.wav synth 400s sine 1000 vol 0.6
[ "$(bytes plain.wav 12 8 | od -An -c | tr -d ' \n')" = 'fmt020\0\0\0' ] || { echo "unexpected SoX header" >&2; exit 1; }
data_bytes=$(( $(wc -c < plain.wav) - 36 ))

# A LIST/INFO chunk of 24 bytes: "INFO", then an "ISFT" entry of 12 bytes of text.
{
    printf 'RIFF'; le32 $((4 + 24 + 8 + 24 + data_bytes)); printf 'WAVE'
    bytes plain.wav 12 24
    printf 'LIST'; le32 24; printf 'INFO'; printf 'ISFT'; le32 12; printf 'qor fixture\000'
    bytes plain.wav 36
} > list-22050.wav

# The format chunk grows to 18 bytes: the 16 PCM bytes and an extra-size word of 0.
{
    printf 'RIFF'; le32 $((4 + 26 + data_bytes)); printf 'WAVE'
    printf 'fmt '; le32 18; bytes plain.wav 20 16; printf '\000\000'
    bytes plain.wav 36
} > fmt18-22050.wav
rm plain.wav

sox mono8-11025.wav -t raw -e unsigned-integer -b 8 mono8-11025.raw
for name in stereo16-44100 list-22050 fmt18-22050; do
    sox "$name.wav" -t raw -e signed-integer -b 16 -L "$name.raw"
done
