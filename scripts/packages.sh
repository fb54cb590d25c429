#!/bin/sh
# The Debian packages that each step needs; the one list of them.
#   scripts/packages.sh build|check|bench|rig|receiver
set -eu

build="
    g++ cmake ninja-build ccache pkg-config python3 curl ca-certificates
    nlohmann-json3-dev libtomlplusplus-dev libfmt-dev libicu-dev
    libisal-dev libturbojpeg0-dev libpng-dev
    libtesseract-dev libleptonica-dev tesseract-ocr-eng
    libcairo2-dev libpango1.0-dev fonts-inter
    qt6-base-dev qt6-l10n-tools
    libxcb1-dev libxcb-composite0-dev libxcb-damage0-dev libxcb-shm0-dev libxcb-res0-dev
    libxcb-xtest0-dev libyuv-dev
    libsdbus-c++-dev libsystemd-dev
    libudev-dev
    libcanberra-dev
    libgtest-dev libgmock-dev
    dbus umockdev libumockdev-dev xvfb openbox trayer
"
bench="
    libbenchmark-dev libmicrohttpd-dev libswscale-dev
    fonts-dejavu-core fonts-liberation fonts-noto-core
"
rig="
    qemu-system-x86 seabios debootstrap busybox-static kmod cpio
"
receiver="
    uxplay avahi-daemon avahi-utils
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
    gstreamer1.0-tools iproute2
"
check="
    $bench
    clang-19 clang-tidy-19 clang-format-19 libclang-rt-19-dev llvm-19
    mandoc
    tesseract-ocr-deu tesseract-ocr-fra
"

case "${1:-build}" in
    build) echo $build ;;
    bench) echo $build $bench ;;
    check) echo $build $check ;;
    rig) echo $build $rig ;;
    receiver) echo $build $receiver ;;
    *) echo "usage: packages.sh build|check|bench|rig|receiver" >&2; exit 2 ;;
esac
