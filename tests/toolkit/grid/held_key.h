// HeldKey: holds a key down for the thread's keyboard state, as the real key would.
//
//   HeldKey ctrl(VK_CONTROL);
//   window.key(VK_END);
#pragma once

#include <windows.h>

namespace grid {

class HeldKey {
public:
    explicit HeldKey(int key) : key_(key) { set(0x80); }
    ~HeldKey() { set(0); }

    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

private:
    void set(BYTE value) const {
        BYTE keys[256] = {};
        ::GetKeyboardState(keys);
        keys[key_] = value;
        ::SetKeyboardState(keys);
    }
    int key_;
};

}  // namespace grid
