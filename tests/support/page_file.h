// The pages of a database in the making: in memory, or in a file that grows while it is written.
//
//   fixture::PageFile file;
//   const jet::PageNumber page = file.allocate();
//   file.write(page, image);
//
// Belongs to one thread.
#pragma once

#include "engine/jet/format/types.h"
#include "tests/support/byte_writer.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <set>

namespace fixture {

using PageImage = std::array<std::uint8_t, jet::kPageSize>;

/// The format addresses bytes with 31 bits.
inline constexpr std::uint32_t kMaxPages = 524288;

class PageFile {
public:
    /// Pages in memory.
    PageFile() = default;

    /// Pages in a file, which is made anew. Throws std::runtime_error.
    explicit PageFile(const std::filesystem::path& path);

    /// The next page behind all others; zeros until it is written.
    /// Throws std::length_error when the file would exceed 2 GiB.
    jet::PageNumber allocate();

    /// Marks a page as not in use. It keeps its content and is not allocated again.
    void release(jet::PageNumber page) { released_.insert(page); }
    const std::set<jet::PageNumber>& released() const { return released_; }

    /// Throws std::runtime_error if the disk refuses.
    void write(jet::PageNumber page, const PageImage& image);
    PageImage read(jet::PageNumber page);

    /// Hands what is buffered to the system. Throws std::runtime_error.
    void flush();

    std::uint32_t pageCount() const { return pageCount_; }

    /// The whole content of a file in memory; empty for one on disk.
    const ByteVector& bytes() const { return bytes_; }

private:
    void check();

    std::uint32_t pageCount_ = 0;
    std::set<jet::PageNumber> released_;
    ByteVector bytes_;
    std::filesystem::path path_;
    std::fstream stream_;
    std::uint32_t nextToWrite_ = 0;  ///< the page at which the stream stands
};

}  // namespace fixture
