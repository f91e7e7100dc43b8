#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <vector>

// What a fuzz target supplies. It runs under libFuzzer (fuzz_libfuzzer.cpp) and under a driver of our own
// (fuzz_driver.cpp), which needs no special compiler.

// Takes one input; aborts with a word on standard error if what came out is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Well-formed inputs to start from, made in code.
std::vector<QByteArray> fuzzSeeds();
