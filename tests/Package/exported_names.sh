#!/bin/sh
# Checks the names that the library exports: nothing that no public header declares, apart from kernels and steps, and everything
# in the lists of expected names.
# exported_names.sh LIBRARY INCLUDE_FOLDER EXPECTED_NAMES...

library=$1 include=$2 failed=0
shift 2
NM=${NM:-nm} OBJDUMP=${OBJDUMP:-objdump}

complain() {
    echo "$1"
    failed=1
}

"$OBJDUMP" -p "$library" | grep -qE 'SONAME +libvexa_180\.so$' || complain "soname is not libvexa_180.so"

# Without the marks that every linker sets, and without the return types that templates carry.
names=$("$NM" -D -C --defined-only "$library" | sed -E 's/^[0-9a-f]* . //' | grep -vxE '__bss_start|_edata|_end' |
    sed -E 's/^(void|VexaStatus) //; s/^[a-z ]+\* //' | sort -u)

# Words of the public headers outside comments. A qualified name is public if all its parts are among them.
words=$(sed 's,//.*,,' "$include"/*.h | grep -oE '[A-Za-z_][A-Za-z_0-9]*' | sort -u)

kernels='kernel_[A-Za-z_0-9]+|v210_to_yuv422_unpack_kernel|yuv422_to_444_16u_c2_kernel|k422_v210|k444_422'
kernels="$kernels|bayer2rgb_[A-Za-z_0-9]+|dark_Krnl2(_16)?|dehazeKrnl2(_16)?|adjust_8u_C[13]_kernel"
kernels="$kernels|imageBinary_8u_c[13]_kernel|fpnCUDA|taperKernel|derivatives|derivativeKernel"
kernels="$kernels|calcOFKernel|passGuessKernel|_trackFeatures_Kernel|_calculateTrackerGradientsKernel"
# Steps of workers, which have a leading underscore.
steps='_getFeatures|_calculateGradients|_select(Good|Best)Features|_VexaPointValueDescend|_vexaTrackFeatures'
steps="$steps|_trackFeatures|_calculateTrackerGradients|_calcOpticalFlowLK2?|_passGuess2?"

for name in $(echo "$names" | grep -vE "^(__device_stub__Z[0-9]+)?($kernels|$steps)[<P(]" |
    sed -E 's/\(.*//; s/<[^>]*>//g; s/ /_/g' | sort -u); do
    case $name in
        Vexa*::* | vexa::* | vexa_* | vexa[A-Z]* | getType | getParameters | __vexaDefaultAnchor | operator*) ;;
        initEye | validateImages | sha1*) ;;
        *) complain "exported, but of no public family: $name" ;;
    esac
    for part in $(echo "$name" | grep -oE '[A-Za-z_][A-Za-z_0-9]*'); do
        echo "$words" | grep -qx "$part" || complain "exported, but in no public header: $name"
    done
done

for expected in "$@"; do
    while read -r name; do
        echo "$names" | grep -qxF "$name" || complain "not exported: $name"
    done <"$expected"
done

exit $failed
