#ifndef _WIN32

#include "toolkit/grid/model/text_order.h"

#include <cwchar>

namespace grid {

bool TextOrder::operator()(const std::wstring& a, const std::wstring& b) const {
    const int order = std::wcscoll(a.c_str(), b.c_str());
    return order == 0 ? a < b : order < 0;
}

}  // namespace grid

#endif
