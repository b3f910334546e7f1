#!/bin/bash
# renderFarm.sh SOURCE TOOL: runs the commands of docs/render-farm.md, on two cores, and compares the
# pictures with those of one run.
set -eu
document=$1/docs/render-farm.md
mkdir -p bin
ln -sf "$2" bin/ravolt
export PATH=$PWD/bin:$PATH

# The n-th block of bash in the document.
block() {
    awk -v wanted="$1" '/^```bash$/ { inside = ++number == wanted; next }
                        /^```/ { inside = 0 } inside' "$document"
}
block 1 >part.sh
block 2 >oneMachine.sh
block 3 >ssh.sh
block 4 >video.sbatch
block 5 >video.sh
chmod +x part.sh
for script in part.sh oneMachine.sh ssh.sh video.sbatch video.sh; do
    [ -s "$script" ] || { echo "$script is missing in the document"; exit 1; }
    bash -n "$script"
done
grep -q '^#SBATCH --array=0-9$' video.sbatch

# A square, and an island, whose waves depend on the frames before.
cat >square.obj <<'EOF'
v 0 0 0
v 1 0 0
v 1 1 0
v 0 1 0
f 1 2 3 4
EOF
ravolt terrain --island 20 -o isle --size 129 --texture-size 64 -q
export FRAMES=7 PART=3 SIZE=64x40 JOBS=2 MACHINES=:

# check SCRIPT...: its pictures are those of one run.
check() {
    rm -rf pictures
    "$@" >log 2>&1 || { echo "failed: $*"; cat log; exit 1; }
    diff -rq whole pictures || { echo "other pictures: $*"; exit 1; }
    echo "equal: $SCENE by $*"
}

slurm() {
    local task
    for task in 0 1 2; do
        SLURM_ARRAY_TASK_ID=$task bash video.sbatch || return 1
    done
}

for SCENE in square.obj isle/terrain.xml; do
    export SCENE OPTIONS=
    rm -rf whole
    mkdir whole
    ravolt shot "$SCENE" --frames 0..6 --turn 7 --size "$SIZE" -o whole/frame_%04d.png
    [ "$(ls whole | wc -l)" = 7 ]
    ! cmp -s whole/frame_0001.png whole/frame_0002.png
    check bash oneMachine.sh
    check slurm
done
check bash ssh.sh # on this machine, which needs no ssh
bash video.sh >log 2>&1 || { cat log; exit 1; }
[ -s video.mp4 ]

# A part that cannot be drawn fails the whole.
export SCENE=missing.rve
! bash oneMachine.sh >log 2>&1
