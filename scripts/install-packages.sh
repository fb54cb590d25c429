#!/bin/sh
# Installs what is missing of the packages for a step:
#   scripts/install-packages.sh build|check|bench|rig|receiver
set -eu
cd "$(dirname "$0")"

wanted=$(./packages.sh "${1:-build}")

if ! command -v dpkg-query >/dev/null; then
    echo "This is not a Debian system. If the build misses something, these are the packages it" >&2
    echo "is made with on Debian 12: $wanted" >&2
    exit 0
fi

# Unknown names make dpkg-query fail, but it still prints the known ones.
installed=$(dpkg-query -W -f '${db:Status-Abbrev}${Package}\n' $wanted 2>/dev/null |
    sed -n 's/^ii *//p') || true
missing=""
for package in $wanted; do
    case "
$installed
" in
        *"
$package
"*) ;;
        *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=""
elif command -v sudo >/dev/null; then
    as_root="sudo"
else
    echo "These packages are missing, and neither root nor sudo is there to install them:" >&2
    echo "  apt-get install --no-install-recommends$missing" >&2
    exit 1
fi

echo "Installing:$missing"
apt() {
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 -qq "$@"
}
apt update || echo "The package lists could not be updated; trying with the old ones." >&2
apt install -y --no-install-recommends $missing >/dev/null || {
    echo "These packages could not be installed:$missing" >&2
    exit 1
}
