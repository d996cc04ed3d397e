#ifdef _WIN32

#include "toolkit/grid/model/text_order.h"

#include <windows.h>

namespace grid {

bool TextOrder::operator()(const std::wstring& a, const std::wstring& b) const {
    const int order =
        ::CompareStringEx(LOCALE_NAME_USER_DEFAULT, 0, a.data(), static_cast<int>(a.size()),
                          b.data(), static_cast<int>(b.size()), nullptr, nullptr, 0);
    return order == CSTR_EQUAL ? a < b : order == CSTR_LESS_THAN;
}

}  // namespace grid

#endif
