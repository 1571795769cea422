#!/usr/bin/env bash
# Builds the Debian package from the build tree into a scratch folder, unpacks it into a
# scratch root and checks what a user gets: the program, the udev rule, the desktop
# integration, the manual page, the dependencies; lintian's verdict when it is installed.
# usage: package_test.sh <build dir> <version> <cpack>
set -uo pipefail
build=$1 version=$2 cpack=$3

command -v dpkg-deb >/dev/null || { echo "dpkg-deb not installed: package not checked"; exit 77; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
check() { local what=$1; shift; "$@" >/dev/null 2>&1 || fail "$what"; }

if ! "$cpack" -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/out" >"$scratch/cpack.log" 2>&1; then
    cat "$scratch/cpack.log"
    echo "FAIL: cpack could not build the package"
    exit 1
fi
arch=$(dpkg --print-architecture)
deb="$scratch/out/lxmeval_${version}_${arch}.deb"
[ -f "$deb" ] || { ls "$scratch/out"; echo "FAIL: no $(basename "$deb")"; exit 1; }

# ---- control fields; the dependencies come from the libraries the program links
field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = lxmeval ] || fail "Package is '$(field Package)'"
[ "$(field Version)" = "$version" ] || fail "Version is '$(field Version)'"
[ "$(field Architecture)" = "$arch" ] || fail "Architecture is '$(field Architecture)'"
depends=$(field Depends)
for lib in libc6 libstdc++6 libqt6core6 libqt6widgets6 libusb-1.0-0; do
    [[ ", $depends" == *", $lib "* || ", $depends," == *", $lib,"* ]] || fail "Depends lacks $lib: $depends"
done

# The script that applies the udev rule on installation is there and is valid shell.
dpkg-deb -e "$deb" "$scratch/control" || fail "dpkg-deb -e"
check "postinst is executable" test -x "$scratch/control/postinst"
check "postinst is valid shell" sh -n "$scratch/control/postinst"

# ---- the files, unpacked as dpkg would install them
root="$scratch/root"
dpkg-deb -x "$deb" "$root" || { echo "FAIL: dpkg -x"; exit 1; }
outside=$(cd "$root" && find . -mindepth 1 -maxdepth 1 ! -name usr)
[ -z "$outside" ] || fail "files outside /usr: $outside"

bin="$root/usr/bin/lxmeval"
check "usr/bin/lxmeval is an executable" test -x "$bin"
command -v file >/dev/null && { file -b "$bin" | grep -q 'ELF.*stripped' && ! file -b "$bin" | grep -q 'not stripped'; } ||
    fail "the program is not a stripped ELF: $(file -b "$bin" 2>&1)"
# The packaged program itself starts and knows its version.
got=$(QT_QPA_PLATFORM=offscreen timeout 20 "$bin" --version 2>/dev/null)
[[ "$got" == *"lxmeval $version"* ]] || fail "lxmeval --version said '$got'"

rule="$root/usr/lib/udev/rules.d/60-lxmeval.rules"
check "udev rule installed" test -f "$rule"
rule_line=$(grep -v '^#' "$rule" 2>/dev/null | grep .)
for part in 'SUBSYSTEM=="usb"' 'ATTR{idVendor}=="5e3d"' 'ATTR{idProduct}=="1c07"' 'TAG+="uaccess"'; do
    [[ "$rule_line" == *"$part"* ]] || fail "udev rule lacks $part"
done

desktop="$root/usr/share/applications/com.velmarin.lxmeval.desktop"
check "desktop entry installed" test -f "$desktop"
for line in 'Type=Application' 'Exec=lxmeval' 'Icon=lxmeval' 'Terminal=false'; do
    grep -qx "$line" "$desktop" || fail "desktop entry lacks $line"
done
command -v desktop-file-validate >/dev/null && { desktop-file-validate "$desktop" || fail "desktop-file-validate"; }
icon="$root/usr/share/icons/hicolor/scalable/apps/lxmeval.svg"
check "icon is an SVG document" grep -q '<svg' "$icon"
command -v xmllint >/dev/null && check "icon is well-formed XML" xmllint --noout "$icon"

metainfo="$root/usr/share/metainfo/com.velmarin.lxmeval.metainfo.xml"
check "metainfo installed" test -f "$metainfo"
grep -q '<launchable type="desktop-id">com.velmarin.lxmeval.desktop</launchable>' "$metainfo" ||
    fail "metainfo does not launch the desktop entry"
grep -q "<release version=\"$version\"" "$metainfo" || fail "metainfo release is not $version"
command -v xmllint >/dev/null && check "metainfo is well-formed XML" xmllint --noout "$metainfo"
command -v appstreamcli >/dev/null && { appstreamcli validate --no-net "$metainfo" >"$scratch/as.log" 2>&1 ||
    { cat "$scratch/as.log"; fail "appstreamcli validate"; }; }

man="$root/usr/share/man/man1/lxmeval.1.gz"
if gzip -t "$man" 2>/dev/null; then
    page=$(gzip -dc "$man")
    for opt in '\-\-simulate' '/d' '\-\-sensor' '\-\-script' '\-\-loops' '\-\-abort\-on\-fail' '\-\-help' '\-\-version'; do
        [[ "$page" == *"$opt"* ]] || fail "man page lacks $opt"
    done
    [[ "$page" == *"$version"* ]] || fail "man page is not of version $version"
    if command -v man >/dev/null; then
        warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$man" 2>&1 >/dev/null)
        [ -z "$warnings" ] || fail "man page warnings: $warnings"
    fi
else
    fail "no gzip-compressed man page"
fi

doc="$root/usr/share/doc/lxmeval"
check "copyright file" grep -q '^Copyright: ' "$doc/copyright"
# What the Help menu opens, and the man page's pointers to it.
for f in README.md scripts.md examples/register_check.txt examples/threshold_test.txt examples/loop_with_pauses.txt; do
    check "doc $f" test -s "$doc/$f"
    [[ "${page:-}" == *"${f%%/*}"* ]] || fail "man page does not name $f"
done
gzip -dc "$doc/changelog.gz" 2>/dev/null | head -1 | grep -q "^lxmeval ($version)" || fail "changelog is not of $version"

# ---- lintian, when installed: no errors
if command -v lintian >/dev/null; then
    verdict=$(lintian --fail-on error "$deb" 2>&1)
    status=$?
    grep -v 'root privileges' <<<"$verdict"
    [ "$status" -eq 0 ] || fail "lintian reports errors"
else
    echo "lintian not installed: its checks skipped"
fi

[ "$failures" -eq 0 ] && echo "package $(basename "$deb"): all checks passed"
exit $((failures > 0))
