#pragma once

#include <string_view>

namespace fernlow::test {

/// Keeps a test's input as a fuzzer's seed, where FERNLOW_SEEDS names a folder for them: the tables
/// of cases are the best seeds there are.
void keepSeed(std::string_view corpus, std::string_view input);

} // namespace fernlow::test
