#include "engine/jet/page_cache.h"

namespace jet {

PagePtr PageCache::get(PageNumber number) {
    std::uint64_t forgottenBefore = 0;
    {
        const std::lock_guard lock{mutex_};
        if (const auto found = byNumber_.find(raw(number)); found != byNumber_.end()) {
            byUse_.splice(byUse_.begin(), byUse_, found->second);
            return found->second->page;
        }
        forgottenBefore = forgotten_;
    }
    if (number == kNoPage || raw(number) >= storage_.pageCount()) {
        throwDamaged(number, "a link leads outside the file");
    }
    const auto page = std::make_shared<Page>();
    storage_.readPages(number, *page);

    const std::lock_guard lock{mutex_};
    // What was read while pages changed may be old already.
    if (forgotten_ == forgottenBefore && !byNumber_.contains(raw(number))) {
        byUse_.push_front({number, page});
        byNumber_[raw(number)] = byUse_.begin();
        if (byUse_.size() > capacity_) {
            byNumber_.erase(raw(byUse_.back().number));
            byUse_.pop_back();
        }
    }
    return page;
}

void PageCache::clear() {
    const std::lock_guard lock{mutex_};
    ++forgotten_;
    byNumber_.clear();
    byUse_.clear();
}

void PageCache::forget(PageNumber number) {
    const std::lock_guard lock{mutex_};
    ++forgotten_;
    const auto found = byNumber_.find(raw(number));
    if (found == byNumber_.end()) return;
    byUse_.erase(found->second);
    byNumber_.erase(found);
}

Bytes PageReader::page(PageNumber number) {
    if (const Bytes page = pageOfBlock(number); !page.empty()) return page;
    if (lender_) {
        if (const Bytes page = lender_->pageOfBlock(number); !page.empty()) return page;
    }
    if (!held_ || heldNumber_ != number) {
        held_ = cache_->get(number);
        heldNumber_ = number;
    }
    return *held_;
}

void PageReader::loadBlock(PageNumber first, std::size_t count) {
    blockCount_ = 0;
    block_.resize(count * kPageSize);
    storage_->readPages(first, block_);
    blockFirst_ = raw(first);
    blockCount_ = static_cast<std::uint32_t>(count);
}

}  // namespace jet
