#!/bin/sh
# makeVideos.sh FOLDER: makes the videos of the tests there by two encoders, ffmpeg's and that of
# mjpegtools, and beside each NAME its planes by ffmpeg's decoder, NAME.yuv. One thread and no time
# stamps, so that a video is the same each time.
set -eu
mkdir -p "$1"
cd "$1"

frames=12

# ffmpegQuietly ARGUMENTS ...: ffmpeg, whose own words matter only when it fails.
ffmpegQuietly() {
    ffmpeg -nostdin -v error -y -threads 1 "$@"
}

# source SIZE [field]: a moving test picture; with `field` each frame is woven of two moments.
source() {
    rate=25 weave=null
    [ -z "${2:-}" ] || rate=50 weave="tinterlace=interleave_top,setfield=tff"
    width=${1%x*} height=${1#*x} # the picture itself is made in even sizes only
    even=$((width + width % 2))x$((height + height % 2))
    ffmpegQuietly -f lavfi -i "testsrc2=size=$even:rate=$rate" -frames:v $frames \
        -vf "format=rgb24,crop=$width:$height:0:0,format=yuv420p,$weave" -f yuv4mpegpipe pipe:1
}

# byFfmpeg NAME FORMAT SIZE BFRAMES [field]
byFfmpeg() {
    flags=+bitexact
    [ -z "${5:-}" ] || flags=+bitexact+ildct+ilme
    source "$3" "${5:-}" | ffmpegQuietly -f yuv4mpegpipe -i pipe:0 -c:v "$2" -bf "$4" -g 6 -q:v 3 \
        -fflags +bitexact -flags:v "$flags" -f "$2" "$1"
    cp "$1" "$1.noend"
    printf '\000\000\001\267' >>"$1" # the end code, which this encoder omits
    reference "$1"
}

# byMjpegtools NAME FORMAT SIZE BFRAMES [field]; FORMAT 0 is MPEG-1, 3 is MPEG-2
byMjpegtools() {
    mode=0
    [ -z "${5:-}" ] || mode=1
    [ "$2" = 3 ] || mode=0
    source "$3" "${5:-}" |
        mpeg2enc -v 0 -M 0 -f "$2" -I $mode -R "$4" -g 6 -G 6 -b 4000 -V 230 -q 4 -o "$1" 2>"$1.log" ||
        { cat "$1.log"; exit 1; }
    rm "$1.log"
    reference "$1"
}

# reference NAME
reference() {
    ffmpegQuietly -i "$1" -vsync passthrough -pix_fmt yuv420p -f rawvideo "$1.yuv"
}

byFfmpeg ffmpeg1_16x16 mpeg1video 16x16 0
byFfmpeg ffmpeg1_50x38_b mpeg1video 50x38 2
byFfmpeg ffmpeg1_352x288_b mpeg1video 352x288 2
byFfmpeg ffmpeg2_16x16 mpeg2video 16x16 0
byFfmpeg ffmpeg2_50x38 mpeg2video 50x38 0
byFfmpeg ffmpeg2_51x37_b mpeg2video 51x37 2
byFfmpeg ffmpeg2_64x48_b mpeg2video 64x48 2
byFfmpeg ffmpeg2_176x144 mpeg2video 176x144 0
byFfmpeg ffmpeg2_352x288_fields_b mpeg2video 352x288 2 field
byMjpegtools mjpegtools1_176x144 0 176x144 0
byMjpegtools mjpegtools1_352x288_b 0 352x288 2
byMjpegtools mjpegtools2_64x48 3 64x48 0
byMjpegtools mjpegtools2_176x144_b 3 176x144 2
byMjpegtools mjpegtools2_352x288_fields_b 3 352x288 2 field
