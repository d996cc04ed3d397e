// Replays the saved inputs of a fuzz target, one test a file. An input that goes wrong ends the
// program, through the sanitizers or through the target's own checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> savedInputs() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator{VORELLE_FUZZ_CORPUS}) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::uint8_t> contentOf(const std::filesystem::path& file) {
    std::ifstream in{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{in}, std::istreambuf_iterator<char>{}};
}

class SavedInput : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(SavedInput, IsSurvived) {
    const std::vector<std::uint8_t> whole = contentOf(GetParam());
    EXPECT_EQ(LLVMFuzzerTestOneInput(whole.data(), whole.size()), 0);
}

/// Cut anywhere, it is another input.
TEST_P(SavedInput, IsSurvivedWhenCut) {
    const std::vector<std::uint8_t> whole = contentOf(GetParam());
    const std::size_t step = whole.size() / 256 + 1;
    for (std::size_t length = 0; length < whole.size(); length += step) {
        // A copy of just that length, so that a read behind the end is seen.
        const std::vector<std::uint8_t> cut{whole.begin(),
                                            whole.begin() + static_cast<std::ptrdiff_t>(length)};
        EXPECT_EQ(LLVMFuzzerTestOneInput(cut.data(), cut.size()), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, SavedInput, testing::ValuesIn(savedInputs()));

}  // namespace
