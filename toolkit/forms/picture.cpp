#include "toolkit/forms/picture.h"

namespace forms {

Control::Kind Picture::kind() const {
    return {.className = L"STATIC", .style = SS_ICON | SS_REALSIZECONTROL};
}

void Picture::setIcon(int resource) {
    resource_ = resource;
    if (isCreated()) showIcon();
}

// Shared icons belong to the system, which keeps one of each size.
void Picture::showIcon() {
    const RECT rect = pixelBounds();
    const HANDLE icon = ::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource_),
                                     IMAGE_ICON, static_cast<int>(rect.right - rect.left),
                                     static_cast<int>(rect.bottom - rect.top), LR_SHARED);
    send(STM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(icon));
}

}  // namespace forms
