#!/usr/bin/env bash
# scripts/mutate over a small project with mutants that are noticed, that are not, that never end and that no test reaches.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
/usr/bin/python3 -c 'import clang.cindex' 2>/dev/null || { echo "no python3-clang-14: scripts/install-packages mutate" && exit 77; }
copyOf scripts/mutate scripts/mutation
cd "$work/repository" || exit 1
mkdir -p room tests/room docs/quality

cat >CMakeLists.txt <<'TEXT'
cmake_minimum_required(VERSION 3.25)
project(tiny LANGUAGES CXX)
enable_testing()
find_package(GTest REQUIRED)
add_executable(tiny-tests room/Count.cpp room/Wait.cpp tests/room/CountTest.cpp)
target_include_directories(tiny-tests PRIVATE .)
target_link_libraries(tiny-tests PRIVATE GTest::gtest_main)
add_test(NAME unit COMMAND tiny-tests)
TEXT
echo 'room unit' >tests/mutated-rooms.txt
cat >room/Count.h <<'TEXT'
#pragma once
#include <array>
constexpr int kLimit = 7;
using Pair = std::array<int, 2>;
template <class T>
T product(T const& one, T const& other) {
    return one * other;
}
int larger(int a, int b);
int forgotten(int a);
void limit(int& value);
Pair ordered(int a, int b);
unsigned long waited(unsigned long volatile left);
TEXT
cat >room/Count.cpp <<'TEXT'
#include "room/Count.h"
static_assert(kLimit > 1 + 1);
int larger(int a, int b) { return a > b ? a : b; }
int forgotten(int a) { return -a; }
static void raise(int& value) { value = kLimit; }
void limit(int& value) {
    if (value > 7) raise(value);
}
Pair ordered(int a, int b) { return {a, b}; }
TEXT
cat >room/Wait.cpp <<'TEXT'
#include "room/Count.h"
unsigned long waited(unsigned long volatile left) {
    while (left != 0)
        --left;
    return left;
}
TEXT
cat >tests/room/CountTest.cpp <<'TEXT'
#include "room/Count.h"
#include <gtest/gtest.h>
TEST(CountTest, TheLargerOneIsFound) {
    EXPECT_EQ(larger(1, 2), 2);
    EXPECT_EQ(larger(2, 1), 2);
}
TEST(CountTest, Products) { EXPECT_EQ(product(2, 3), 6); }
TEST(CountTest, OrderIsKept) { EXPECT_EQ(ordered(1, 2), (Pair{1, 2})); }
TEST(LimitTest, WhatIsAboveIsLimited) {
    int value = 9;
    limit(value);
    EXPECT_EQ(value, 7);
    value = 3;
    limit(value);
    EXPECT_EQ(value, 3);
}
TEST(WaitTest, NothingIsLeft) { EXPECT_EQ(waited(3), 0U); }
TEXT
sources() { tar -c CMakeLists.txt room tests | sha256sum; }
before=$(sources)
mutate() { run scripts/mutate -j 2 "$@"; }
row() { grep -E '^room ' <<<"$out" | xargs; }

mutate --list
is 'the exit code of --list' "$status" 0
is 'the list' "$(grep '^room' <<<"$out")" 'room/Count.cpp:3:37 comparison > -> <=
room/Count.cpp:3:37 comparison > -> >=
room/Count.cpp:4:31 arithmetic - -> 
room/Count.cpp:5:33 removed value = kLimit -> 
room/Count.cpp:7:15 comparison > -> <=
room/Count.cpp:7:15 comparison > -> >=
room/Count.cpp:7:17 constant 7 -> 6
room/Count.cpp:7:17 constant 7 -> 8
room/Count.cpp:7:20 removed raise(value) -> 
room/Count.cpp:9:38 swapped a, b -> b, a
room/Count.h:7:16 arithmetic * -> /
room/Wait.cpp:3:17 comparison != -> ==
room/Wait.cpp:3:20 constant 0 -> 1
room/Wait.cpp:4:9 arithmetic -- -> ++'

mutate
is 'the exit code where mutants are not noticed' "$status" 1
# folder, mutants, run, killed, timed out, unnoticed, listed, unlisted, noticed
is 'the result' "$(row)" 'room 14 14 8 1 5 0 5 64.3 %'
has 'what is said of one that survives' "$out" 'survived: room/Count.cpp:3:37 comparison > -> >='
has 'what is said of one that is not reached' "$out" 'unreached: room/Count.cpp:4:31 arithmetic - -> '
has 'what is said at the end' "$out" 'mutate: room: less than 95 % are noticed'
has 'the report' "$(cat docs/quality/mutation.txt)" '  room/Count.cpp:4:31 arithmetic - ->  (no test gets there)'
is 'the sources after a run' "$(sources)" "$before"

mutate
has 'what runs again without a change' "$out" '14 of 14 mutants, 0 to run'

# Killed in the middle, it leaves no process behind.
scripts/mutate -j 1 --fresh room/Wait.cpp >/dev/null 2>&1 &
killed=$!
until pid=$(pgrep -P "$killed" tiny-tests); do sleep 0.1; done
kill -KILL "$killed"
wait "$killed" 2>/dev/null
for ((tenths = 0; tenths < 20; ++tenths)); do
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
done
! kill -0 "$pid" 2>/dev/null || fail 'a test outlives the script'
run scripts/mutate -j 2
has 'what an interrupted run leaves to do' "$out" '14 of 14 mutants, '

mutate --survivors
has 'what runs of the survivors' "$out" '5 of 14 mutants, 5 to run'
mutate room/Wait.cpp
is 'the exit code of a file whose mutants are noticed' "$status" 0
is 'the result of a file' "$(row)" 'room 3 3 2 1 0 0 0 100.0 %'
mutate --count 4
is 'the count of a selection' "$(row | cut -d' ' -f2)" 4
selection=$out
mutate --count 4
is 'the selection, again' "$(sed 1d <<<"$out" | grep -v ' s$')" "$(sed 1d <<<"$selection" | grep -v ' s$')"

mutate --only 'room/Count.cpp:9:38 swapped a, b -> b, a'
has 'the change of one' "$out" 'Pair ordered(int a, int b) { return {[[a, b -> b, a]]}; }'
has 'what notices one' "$out" 'killed by unit: CountTest.OrderIsKept'
has 'what the test says' "$out" 'Expected equality'
mutate --only 'room/Count.cpp:1:1 constant 1 -> 2'
is 'the exit code of an unknown name' "$status" 2

listed() { printf 'room/Count.cpp\n  %s\n  %s\n\n' "$1" 'a reason,' >>docs/quality/mutants.txt; }
listed 'int larger(int a, int b) { return a [[> -> >=]] b ? a : b; }'
listed 'int forgotten(int a) { return [[- -> ]]a; }'
listed 'if (value [[> -> >=]] 7) raise(value);'
listed 'if (value > [[7 -> 6]]) raise(value);'
listed 'if (value > [[7 -> 8]]) raise(value);'
mutate
is 'the exit code where all others are noticed' "$status" 0
is 'the result with a list' "$(row)" 'room 14 14 8 1 5 5 0 100.0 %'
has 'the report with a list' "$(tail -n 1 docs/quality/mutation.txt)" none

cp docs/quality/mutants.txt kept.txt
listed 'Pair ordered(int a, int b) { return {[[a, b -> b, a]]}; }'
mutate
is 'the exit code of a listed one that is noticed' "$status" 1
has 'what is said of it' "$out" 'docs/quality/mutants.txt:21: is noticed by unit: CountTest.OrderIsKept: Pair ordered'
cp kept.txt docs/quality/mutants.txt
listed 'int larger(int a) { return a [[> -> >=]] 1; }'
mutate
is 'the exit code of a listed one that is gone' "$status" 1
has 'what is said of it' "$out" 'docs/quality/mutants.txt:21: there is no such mutant: int larger(int a)'
printf '\nroom/Count.cpp\n' >>docs/quality/mutants.txt
mutate
is 'the exit code of a list that cannot be read' "$status" 2
mv kept.txt docs/quality/mutants.txt

# Lines above do not matter to the list, and a test that is added is seen.
sed -i '1i // A line.' room/Count.cpp
printf 'TEST(CountTest, Negative) { EXPECT_EQ(forgotten(1), -1); }\n' >>tests/room/CountTest.cpp
mutate
is 'the exit code after a new test' "$status" 1
has 'what the new test notices' "$out" 'is noticed by unit: CountTest.Negative: int forgotten'
is 'the result after a new test' "$(row)" 'room 14 14 9 1 4 4 0 100.0 %'
printf 'TEST(CountTest, Broken) { FAIL(); }\n' >>tests/room/CountTest.cpp
mutate
is 'the exit code of tests that fail without a mutant' "$status" 2
has 'what is said of them' "$err" 'fails without a mutant: unit: CountTest.Broken'
echo 'mutate: all as said'
