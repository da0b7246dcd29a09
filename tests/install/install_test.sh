#!/bin/sh
# Installs the library and builds programs against it: somebody else's by find_package and by pkg-config, and the
# README's examples as they stand. Arguments: the build folder, the source folder, the C++ and the C compiler.
set -eu
build=$1 source=$2 compiler=$3 c_compiler=$4
consumer=$source/tests/install/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
headers=$(ls "$prefix/include" | sort | tr '\n' ' ')
expected="ZRVDataGenerator.h ZRVDefinitions.h ZRVDevice.h ZRVFlatInterface.h ZRVSerialIO.h "
[ "$headers" = "$expected" ] || { echo "installed headers: $headers"; exit 1; }

for page in man/man1/zrv.1 bash-completion/completions/zrv zsh/site-functions/_zrv fish/vendor_completions.d/zrv.fish; do
  grep -q zrv "$prefix/share/$page" || { echo "not installed: $page"; exit 1; }
done

cmake -S "$consumer" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer" "$prefix/include/ZRVDefinitions.h"

cp -r "$source/examples/cpp" "$work/example"  # as a user copies it
cmake -S "$work/example" -B "$work/example/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/example/build" >/dev/null
said=$("$work/example/build/play_text" /no/such/port Hello 2>&1) && { echo "plays without a controller"; exit 1; }
[ "$said" = "connecting failed with error 12" ] || { echo "said: $said"; exit 1; }

library=$(dirname "$(find "$prefix" -name libzrv.so)")
PKG_CONFIG_PATH=$library/pkgconfig
export PKG_CONFIG_PATH
# Words are meant to split here: they are compiler options.
"$compiler" -std=c++17 "$consumer/main.cpp" -o "$work/plain" $(pkg-config --cflags --libs zrv)
LD_LIBRARY_PATH=$library "$work/plain" "$prefix/include/ZRVDefinitions.h"

example() { awk -v fence="\`\`\`$1" '$0 == fence { on = 1; next } /^```/ { on = 0 } on' "$source/README.md"; }
example cpp >"$work/example.cpp"
example c >"$work/example.c"
"$compiler" -std=c++17 "$work/example.cpp" -o "$work/example_cpp" $(pkg-config --cflags --libs zrv)
"$c_compiler" -std=c99 "$work/example.c" -o "$work/example_c" $(pkg-config --cflags --libs zrv)
