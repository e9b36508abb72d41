#!/usr/bin/env bash
# Installs what is missing and builds Trevane.exe for 64-bit Windows 10 and later: one file that needs nothing but
# Windows, in build/windows/bin, and zipped as build/Trevane-<version>-windows.zip, with a README.txt, the licences of
# what is in it, and what makes it once more with another Qt or libssh.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh
# shellcheck source=tools/windows.sh
. tools/windows.sh
# shellcheck source=tools/windows-network.sh
. tools/windows-network.sh

need_packages "${run_packages[@]}" "${windows_packages[@]}"
need_qt
need_ssh_libraries
need_curl
need_windows_build Trevane
program=build/windows/bin/Trevane.exe

# Whatever is not a part of every Windows 10 would be missing on the user's machine.
system='advapi32|authz|bcrypt|comctl32|comdlg32|crypt32|d2d1|d3d11|d3d9|dwmapi|dwrite|dxgi|gdi32|imm32|iphlpapi|kernel32|mpr|msvcrt|netapi32'
system+='|ntdll|ole32|oleaut32|rpcrt4|secur32|setupapi|shcore|shell32|shlwapi|user32|userenv|uxtheme|version|winmm'
system+='|winspool\.drv|ws2_32|wtsapi32|api-ms-win-[a-z0-9-]+'
foreign=$(x86_64-w64-mingw32-objdump -p "$program" | sed -n 's/.*DLL Name: //p' |
          grep -viE "^($system)(\.dll)?$" || true)
[ -z "$foreign" ] || { echo "Trevane.exe needs what Windows does not have: $foreign" >&2; exit 1; }
check_windows_program "$program"

version=$(sed -n 's/^project(Trevane VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
folder=Trevane-$version
archive=$PWD/build/Trevane-$version-windows.zip
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
mkdir -p "$stage/$folder"/licences/{qt,compiler}
cp "$program" build/windows/package/README.txt "$stage/$folder/"
cp resources/windows/LICENCES.txt "$stage/$folder/licences/"
cp "$qt"/licences/* "$stage/$folder/licences/qt/"
cp -r "$ssh_libraries"/licences/* "$curl_libraries"/licences/* "$stage/$folder/licences/"
for package in gcc-mingw-w64-base mingw-w64-common; do
  cp "/usr/share/doc/$package/copyright" "$stage/$folder/licences/compiler/$package.txt"
done

collect_relink "$stage/$folder/relink"
# The second link also shows that nothing of the first one's time and place is in the program.
mkdir "$stage/again"
"$stage/$folder/relink/relink.sh" "$qt" "$ssh_libraries" "$stage/again/Trevane.exe"
cmp "$program" "$stage/again/Trevane.exe" || { echo "Two links of Trevane.exe differ." >&2; exit 1; }

rm -f "$archive"
(cd "$stage" && zip -qr9 "$archive" "$folder")
echo "build/windows/bin/Trevane.exe: $(stat -c %s "$program") bytes; ${archive#"$PWD"/}: $(stat -c %s "$archive") bytes."
