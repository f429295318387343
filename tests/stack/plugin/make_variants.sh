#!/bin/sh
# make_variants.sh PLUGIN FOLDER: copies of a library with debug information that differ in where their symbols are.
set -eu
plugin=$1
folder=$2
rm -rf "$folder"
mkdir -p "$folder/.debug" "$folder/named"
cd "$folder"
id=$(readelf -n "$plugin" | sed -n 's/^ *Build ID: //p')
by_id=.build-id/$(echo "$id" | cut -c1-2)
file=$(echo "$id" | cut -c3-).debug
for store in stored broken; do
    mkdir -p "$store/$by_id"
done

objcopy --only-keep-debug "$plugin" "stored/$by_id/$file"
head -c 4000 "stored/$by_id/$file" >"broken/$by_id/$file"
cp "$plugin" full.so
objcopy --wildcard --strip-symbol='*Inner*' "$plugin" nolocals.so
strip --strip-all "$plugin" -o stripped.so

# Found by the name in .gnu_debuglink: in .debug beside the library, or in a folder named to the library.
cp "stored/$by_id/$file" .debug/linked.debug
objcopy --add-gnu-debuglink=.debug/linked.debug stripped.so linked.so
cp "stored/$by_id/$file" named/named.debug
objcopy --add-gnu-debuglink=named/named.debug stripped.so named.so
# No build-id, so the checksum counts: the right one, and the right name with other contents.
for name in summed wrongsum; do
    objcopy --remove-section=.note.gnu.build-id "$plugin" $name.full
    objcopy --only-keep-debug $name.full .debug/$name.debug
    strip --strip-all $name.full -o $name.so
    objcopy --add-gnu-debuglink=.debug/$name.debug $name.so
    rm $name.full
done
printf x >>.debug/wrongsum.debug

# A table of functions, compressed, inside the library.
nm --defined-only -f posix "$plugin" | awk '$2 == "t" || $2 == "T" { print $1 }' >keep
objcopy -S --keep-symbols=keep "$plugin" mini
xz mini
objcopy --add-section .gnu_debugdata=mini.xz stripped.so embedded.so
rm keep mini.xz
