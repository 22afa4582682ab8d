#pragma once

#include <string_view>

namespace fernlow::test {

/// Saves the input of a test as a seed for a fuzzer, if the environment variable FERNLOW_SEEDS
/// names a folder for seeds.
void keepSeed(std::string_view corpus, std::string_view input);

} // namespace fernlow::test
