#!/usr/bin/env bash
# Provides Qt for mingw and prints the folder it lies in: the one that QUORIL_QT_MINGW names, else the one in the
# user's cache, which is built from Debian's source package of the same Qt as the host's when it is missing.
set -euo pipefail
cd "$(dirname "$0")/.."

is_qt() { [ -f "$1/lib/cmake/Qt6Widgets/Qt6WidgetsConfig.cmake" ]; }

if [ -n "${QUORIL_QT_MINGW:-}" ]; then
  is_qt "$QUORIL_QT_MINGW" || { echo "QUORIL_QT_MINGW=$QUORIL_QT_MINGW holds no Qt." >&2; exit 1; }
  realpath "$QUORIL_QT_MINGW"
  exit 0
fi
cache=${XDG_CACHE_HOME:-$HOME/.cache}/quoril
target=$cache/qt-mingw
if is_qt "$target"; then
  echo "$target"
  exit 0
fi

# What follows takes about half an hour on two idle cores, 3 GB of disk, and the network. Only the last line is output.
exec 3>&1 >&2
mkdir -p "$cache"
exec 9>"$cache/qt-mingw.lock"
flock 9
if is_qt "$target"; then
  echo "$target" >&3
  exit 0
fi
version=$(dpkg-query -W -f='${source:Version}' qt6-base-dev-tools)
work=$(mktemp -d "$cache/qt-build.XXXXXX")
trap 'rm -rf "$work"' EXIT

# The source package, from where the system has its packages, with lists of its own: the system's stay as they are.
mkdir -p "$work/lists/partial" "$work/source" "$work/sources.d"
sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$work/sources.list" 2>/dev/null || true
if [ -f /etc/apt/sources.list.d/debian.sources ]; then
  sed 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >"$work/sources.d/debian.sources"
fi
apt=(apt-get -q -o "Dir::Etc::SourceList=$work/sources.list" -o "Dir::Etc::SourceParts=$work/sources.d"
  -o "Dir::State::Lists=$work/lists" -o APT::Sandbox::User=root
  -o "Dir::Cache::pkgcache=$work/pkgcache.bin" -o "Dir::Cache::srcpkgcache=$work/srcpkgcache.bin")
echo "Building Qt $version for mingw."
"${apt[@]}" update
(cd "$work/source" && "${apt[@]}" source "qt6-base=$version")
source=$(find "$work/source" -mindepth 1 -maxdepth 1 -type d)

# The toolchain file finds zlib and the like of mingw's root only; Qt takes its bundled ones. Debian removed
# wintab.h from the source.
QUORIL_QT_MINGW=$work/none cmake -S "$source" -B "$work/build" -G Ninja -Wno-dev \
  -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-toolchain.cmake" \
  -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$target.new" \
  -DBUILD_SHARED_LIBS=OFF -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_USE_CCACHE=OFF \
  -DFEATURE_tabletevent=OFF -DFEATURE_sql=OFF -DFEATURE_network=OFF -DFEATURE_dbus=OFF \
  -DFEATURE_opengl=OFF -DINPUT_opengl=no -DFEATURE_xml=OFF -DFEATURE_vulkan=OFF \
  -DFEATURE_system_zlib=OFF -DFEATURE_system_pcre2=OFF -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF \
  -DFEATURE_system_freetype=OFF -DFEATURE_system_harfbuzz=OFF -DFEATURE_zstd=OFF
if [ "${1:-}" = --configure-only ]; then
  exit 0
fi
nice cmake --build "$work/build" --parallel
rm -rf "$target.new"
cmake --install "$work/build" >/dev/null
cp "$source/debian/copyright" "$target.new/copyright"
rm -rf "$target"
mv "$target.new" "$target"
echo "$target" >&3
