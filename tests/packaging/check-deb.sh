#!/usr/bin/env bash
# Builds the Debian package from a build folder, checks what it holds and what
# it depends on, unpacks it into a scratch root and starts both programs from
# there:  check-deb.sh BUILD_DIR
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

(cd "$build" && cpack -G DEB -B "$work/out" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log" >&2; fail "cpack"; }
deb=$(ls "$work"/out/*.deb)

contents=$(dpkg-deb -c "$deb")
for path in ./usr/bin/ostrel ./usr/bin/ostrel-cli ./usr/bin/ostrel-pkexec \
            ./usr/share/applications/ostrel.desktop \
            ./usr/share/icons/hicolor/32x32/apps/ostrel.png \
            ./usr/share/polkit-1/actions/org.ostrel.datarecovery.policy; do
  grep -q " $path\$" <<<"$contents" || fail "$path is not in the package"
done

depends=$(dpkg-deb -f "$deb" Depends)
for lib in libqt6core6 libqt6widgets6 qt6-qpa-plugins libewf libvhdi libvmdk libqcow libblkid pkexec; do
  grep -q "$lib" <<<"$depends" || fail "Depends lacks $lib: $depends"
done

dpkg-deb -x "$deb" "$work/root"
root="$work/root"
grep -q '^Name\[zh_CN\]=Ostrel数据恢复$' "$root/usr/share/applications/ostrel.desktop" || fail "no Chinese name"
grep -q '^Exec=/usr/bin/ostrel-pkexec' "$root/usr/share/applications/ostrel.desktop" || fail "the menu entry does not go through pkexec"
grep -q '>/usr/bin/ostrel<' "$root/usr/share/polkit-1/actions/org.ostrel.datarecovery.policy" || fail "the policy names another program"
if command -v desktop-file-validate >/dev/null; then
  desktop-file-validate "$root/usr/share/applications/ostrel.desktop"
fi

help=$("$root/usr/bin/ostrel-cli" --help 2>&1) || fail "ostrel-cli --help: $help"
grep -q "ostrel-cli scan" <<<"$help" || fail "ostrel-cli --help: $help"
# The wizard starts and keeps running until timeout ends it (status 124).
set +e
QT_QPA_PLATFORM=offscreen timeout 3 "$root/usr/bin/ostrel" -platform offscreen >"$work/wizard.log" 2>&1
status=$?
set -e
[ "$status" -eq 124 ] || { cat "$work/wizard.log" >&2; fail "the wizard ended with status $status"; }
echo "package ok: $(basename "$deb")"
