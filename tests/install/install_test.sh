#!/bin/sh
# Installs the library and builds a program against it, by find_package and by pkg-config. Arguments: the build
# folder, the consumer's folder, the C++ compiler.
set -eu
build=$1 consumer=$2 compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
headers=$(ls "$prefix/include" | sort | tr '\n' ' ')
expected="ZRVDataGenerator.h ZRVDefinitions.h ZRVDevice.h ZRVFlatInterface.h ZRVSerialIO.h "
[ "$headers" = "$expected" ] || { echo "installed headers: $headers"; exit 1; }

cmake -S "$consumer" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer"

library=$(dirname "$(find "$prefix" -name libzrv.so)")
PKG_CONFIG_PATH=$library/pkgconfig
export PKG_CONFIG_PATH
# Words are meant to split here: they are compiler options.
"$compiler" -std=c++17 "$consumer/main.cpp" -o "$work/plain" $(pkg-config --cflags --libs zrv)
LD_LIBRARY_PATH=$library "$work/plain"
