#!/usr/bin/env bash
# Makes the installer of what scripts/stage-windows.sh put into a folder: package-msi.sh FOLDER VERSION FILE.msi. The same
# files, version and SOURCE_DATE_EPOCH give the same bytes.
set -euo pipefail
export LC_ALL=C
stage=$(realpath "$1")
version=$2
target=$(realpath "$3")
description=$(realpath "$(dirname "$0")/../packaging/windows/quoril-services-manager.wxs")
icon=$(realpath "$(dirname "$0")/../src/resources/icons/application.ico")

# uuid_of: a UUID that is the same for the same text on standard input.
uuid_of() {
  sha1sum | sed -E 's/^(.{8})(.{4}).(.{3}).(.{3})(.{12}).*/{\1-\2-5\3-8\4-\5}/' | tr 'a-f' 'A-F'
}
product=$(uuid_of <<<"Quoril Services Manager $version")
package=$(cd "$stage" && find . -type f | sort | xargs -d '\n' sha1sum | cat - "$description" <(echo "$version") | uuid_of)

work=$(mktemp -d "${TMPDIR:-/tmp}/quoril-msi.XXXXXX")
trap 'rm -rf "$work"' EXIT
# wixl takes the files relative to the folder that it runs in, and the cabinet their times.
cp -a "$stage/." "$work/"
cp "$icon" "$work/application.ico"
touch -d "@$SOURCE_DATE_EPOCH" "$work/application.ico"
(cd "$work" && wixl -a x64 -D "Version=$version" -D "ProductCode=$product" -o result.msi "$description")

# The folder of the programs on the path of all users; it goes again with them.
printf '%s\r\n' $'Environment\tName\tValue\tComponent_' $'s72\tl255\tL255\ts72' $'Environment\tEnvironment' \
  $'Path\t=-*PATH\t[~];[INSTALLDIR]\tCommandLine' >"$work/Environment.idt"
msibuild "$work/result.msi" -i "$work/Environment.idt" \
  -q "INSERT INTO InstallExecuteSequence (Action, Sequence) VALUES ('RemoveEnvironmentStrings', 3300)" \
  -q "INSERT INTO InstallExecuteSequence (Action, Sequence) VALUES ('WriteEnvironmentStrings', 5200)" \
  -s "Quoril Services Manager $version" Quoril "x64;1033" "$package"

# The two times of its summary are those of now; they become the release's. FILETIMEs count 100 ns from 1601.
perl -0777 -i -pe '
  my $units = sub { ($_[0] + 11644473600) * 10000000 };
  my ($earliest, $latest, $release) = map { $units->($_) } time - 3600, time + 60, $ENV{SOURCE_DATE_EPOCH};
  my $count = 0;
  s/(\x40\0\0\0)(.{8})/my $at = unpack("Q<", $2); $at >= $earliest && $at <= $latest
    ? (++$count, $1 . pack("Q<", $release))[1] : $1 . $2/gse;
  die "$count times instead of 2\n" if $count != 2;' "$work/result.msi"
mv "$work/result.msi" "$target"
