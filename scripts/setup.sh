#!/usr/bin/env bash
# Installs what the build, the tests and the programs need on Debian, as far as it is missing; with "windows" also
# what the build for Windows and its tests need, with "packages" what Debian's packages are made with, with "checks"
# what looks at the sources, with "work" that and what makes daily work quick.
set -euo pipefail

packages=(
  g++ cmake ninja-build
  qt6-base-dev            # Core, Gui, Widgets, PrintSupport, moc and rcc
  qt6-translations-l10n   # German texts of the dialogs for files and printers
  libcli11-dev            # the command line of quorilctl
  libgtest-dev libgmock-dev
  libbenchmark-dev
  libhivex-bin libregf-utils libevtx-utils libevt-utils   # oracles of the format tests
  poppler-utils           # pdftotext reads the printed pages back
  xz-utils                # unpacks the real files that the tests read
  dbus                    # a private bus for the test of the workstation lock
  fonts-dejavu-core       # a font for windows without a desktop
  xvfb xdotool            # a screen, a mouse and a keyboard for the tests of the windows
)
if [ "${1:-}" = windows ]; then
  packages+=(
    git                     # the time of the commit, for the archive
    g++-mingw-w64-x86-64-posix
    googletest              # its sources: the library is built for Windows with the tests
    dpkg-dev                # unpacks Qt's source package where no Qt for mingw is at hand
    zip wixl msitools       # the release's archive and installer
    git                     # the time of the last commit, which the release's files carry
    build-essential         # what Debian's source packages are built with
    wine wine64
    openbox x11-utils   # windows with frames and keys, and a look at which there are
  )
fi
if [ "${1:-}" = packages ]; then
  packages+=(
    git                     # takes the sources of the commit, and its time
    build-essential         # what debhelper expects on every machine that makes packages
    debhelper dpkg-dev
    lintian appstream desktop-file-utils    # look at what was made
  )
fi
if [ "${1:-}" = checks ] || [ "${1:-}" = work ]; then
  packages+=(git python3 clang clang-format-14 clang-tidy-14)
fi
if [ "${1:-}" = work ]; then
  packages+=(ccache mold gcovr)
fi

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

root=()
[ "$(id -u)" -eq 0 ] || root=(sudo)
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${root[@]}" apt-get update -qq
"${root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
