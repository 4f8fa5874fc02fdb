# Sourced by ./run and ./test: installs the Debian packages the build and the
# tests need, quietly, and only those that are missing.

OSTREL_BUILD_PACKAGES="cmake ninja-build g++ pkg-config qt6-base-dev qt6-base-dev-tools
  qt6-image-formats-plugins qt6-translations-l10n libgtest-dev libgmock-dev libblkid-dev libewf-dev libvhdi-dev libvmdk-dev libqcow-dev
  fonts-noto-cjk xz-utils ccache"
OSTREL_TEST_PACKAGES="forensics-samples-ntfs forensics-samples-vfat forensics-samples-exfat forensics-samples-files
  qemu-utils ewf-tools dpkg-dev dosfstools mtools ntfs-3g"
OSTREL_SANITIZE_PACKAGES="clang libclang-rt-14-dev"

ostrel_install() {
  local missing=()
  local pkg
  for pkg in "$@"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || missing+=("$pkg")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "Missing packages. Run as root:" >&2
    echo "  apt-get install -y ${missing[*]}" >&2
    return 1
  fi
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get -o DPkg::Lock::Timeout=600 update -qq >/dev/null || return 1
  apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null || return 1
}

# Configures (once) and builds a build folder: ostrel_build DIR [cmake options...]
# Compiles go through ccache: checkouts of the same sources (worktrees, CI's
# fresh clone) share their objects, with paths taken relative to the checkout.
ostrel_build() {
  local dir="$1"; shift
  export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=true CCACHE_MAXSIZE=5G
  if [ ! -f "$dir/build.ninja" ]; then
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@" >/dev/null || return 1
  fi
  cmake --build "$dir" -j "$(nproc)" -- --quiet 2>&1 | grep -v '^ninja: no work to do' || true
  return "${PIPESTATUS[0]}"
}
