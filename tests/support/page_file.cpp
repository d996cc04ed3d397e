#include "tests/support/page_file.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

namespace {

std::size_t offsetOf(jet::PageNumber page) { return std::size_t{raw(page)} * jet::kPageSize; }

}  // namespace

PageFile::PageFile(const std::filesystem::path& path)
    : path_{path},
      stream_{path, std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc} {
    check();
}

jet::PageNumber PageFile::allocate() {
    if (pageCount_ == kMaxPages) throw std::length_error{"a database ends at 2 GiB"};
    const jet::PageNumber page{pageCount_++};
    if (path_.empty()) bytes_.resize(bytes_.size() + jet::kPageSize);
    return page;
}

void PageFile::write(jet::PageNumber page, const PageImage& image) {
    if (path_.empty()) {
        std::copy(image.begin(), image.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(offsetOf(page)));
        return;
    }
    if (raw(page) != nextToWrite_) stream_.seekp(static_cast<std::streamoff>(offsetOf(page)));
    stream_.write(reinterpret_cast<const char*>(image.data()), jet::kPageSize);
    nextToWrite_ = raw(page) + 1;
    check();
}

PageImage PageFile::read(jet::PageNumber page) {
    PageImage image{};
    if (path_.empty()) {
        const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(offsetOf(page));
        std::copy(first, first + jet::kPageSize, image.begin());
        return image;
    }
    stream_.seekg(static_cast<std::streamoff>(offsetOf(page)));
    stream_.read(reinterpret_cast<char*>(image.data()), jet::kPageSize);
    nextToWrite_ = kMaxPages;
    check();
    return image;
}

void PageFile::flush() {
    if (path_.empty()) return;
    stream_.flush();
    check();
}

void PageFile::check() {
    if (!stream_) throw std::runtime_error{"cannot write " + path_.string()};
}

}  // namespace fixture
