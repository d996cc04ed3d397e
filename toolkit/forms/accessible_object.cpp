#include "toolkit/forms/accessible_object.h"

#include <oleauto.h>

#include <new>
#include <utility>

namespace forms {
namespace {

template <class Call>
HRESULT guarded(Call call) noexcept {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

// Children are asked for by whole numbers only.
template <class Call>
HRESULT forChild(const VARIANT& childId, Call call) noexcept {
    if (childId.vt != VT_I4) return E_INVALIDARG;
    return guarded([&] { return call(childId.lVal); });
}

HRESULT give(const std::wstring& text, BSTR* answer) {
    if (text.empty()) return S_FALSE;
    *answer = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *answer ? S_OK : E_OUTOFMEMORY;
}

void give(long number, VARIANT* answer) {
    answer->vt = VT_I4;
    answer->lVal = number;
}

}  // namespace

HRESULT AccessibleObject::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(IAccessible);
    *object = known ? static_cast<IAccessible*>(this) : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

ULONG AccessibleObject::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

// The callers of IDispatch itself are scripts, for which a user interface is not made.
HRESULT AccessibleObject::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}
HRESULT AccessibleObject::GetTypeInfo(UINT, LCID, ITypeInfo**) { return E_NOTIMPL; }
HRESULT AccessibleObject::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) {
    return E_NOTIMPL;
}
HRESULT AccessibleObject::Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                 UINT*) {
    return E_NOTIMPL;
}

HRESULT AccessibleObject::get_accParent(IDispatch** answer) {
    *answer = nullptr;
    return guarded([&] {
        *answer = parent();
        return *answer ? S_OK : S_FALSE;
    });
}

HRESULT AccessibleObject::get_accChildCount(long* answer) {
    *answer = 0;
    return guarded([&] {
        *answer = childCount();
        return S_OK;
    });
}

HRESULT AccessibleObject::get_accChild(VARIANT childId, IDispatch** answer) {
    *answer = nullptr;
    return forChild(childId, [&](LONG id) {
        *answer = child(id);
        return *answer ? S_OK : S_FALSE;
    });
}

HRESULT AccessibleObject::get_accName(VARIANT childId, BSTR* answer) {
    *answer = nullptr;
    return forChild(childId, [&](LONG id) { return give(name(id), answer); });
}

HRESULT AccessibleObject::get_accValue(VARIANT childId, BSTR* answer) {
    *answer = nullptr;
    return forChild(childId, [&](LONG id) { return give(value(id), answer); });
}

HRESULT AccessibleObject::get_accDescription(VARIANT, BSTR* answer) {
    *answer = nullptr;
    return S_FALSE;
}

HRESULT AccessibleObject::get_accRole(VARIANT childId, VARIANT* answer) {
    VariantInit(answer);
    return forChild(childId, [&](LONG id) {
        give(role(id), answer);
        return S_OK;
    });
}

HRESULT AccessibleObject::get_accState(VARIANT childId, VARIANT* answer) {
    VariantInit(answer);
    return forChild(childId, [&](LONG id) {
        give(state(id), answer);
        return S_OK;
    });
}

HRESULT AccessibleObject::get_accHelp(VARIANT, BSTR* answer) {
    *answer = nullptr;
    return S_FALSE;
}

HRESULT AccessibleObject::get_accHelpTopic(BSTR* file, VARIANT, long* topic) {
    *file = nullptr;
    *topic = 0;
    return S_FALSE;
}

HRESULT AccessibleObject::get_accKeyboardShortcut(VARIANT, BSTR* answer) {
    *answer = nullptr;
    return S_FALSE;
}

HRESULT AccessibleObject::get_accFocus(VARIANT* answer) {
    VariantInit(answer);
    return guarded([&] {
        focus(*answer);
        return answer->vt == VT_EMPTY ? S_FALSE : S_OK;
    });
}

HRESULT AccessibleObject::get_accSelection(VARIANT* answer) {
    VariantInit(answer);
    return guarded([&] {
        selection(*answer);
        return answer->vt == VT_EMPTY ? S_FALSE : S_OK;
    });
}

HRESULT AccessibleObject::get_accDefaultAction(VARIANT childId, BSTR* answer) {
    *answer = nullptr;
    return forChild(childId, [&](LONG id) { return give(action(id), answer); });
}

HRESULT AccessibleObject::accSelect(long flags, VARIANT childId) {
    return forChild(childId, [&](LONG id) { return select(flags, id) ? S_OK : S_FALSE; });
}

HRESULT AccessibleObject::accLocation(long* left, long* top, long* width, long* height,
                                      VARIANT childId) {
    *left = *top = *width = *height = 0;
    return forChild(childId, [&](LONG id) {
        const RECT rect = location(id);
        *left = rect.left;
        *top = rect.top;
        *width = rect.right - rect.left;
        *height = rect.bottom - rect.top;
        return S_OK;
    });
}

HRESULT AccessibleObject::accNavigate(long direction, VARIANT childId, VARIANT* answer) {
    VariantInit(answer);
    return forChild(childId, [&](LONG id) {
        navigate(direction, id, *answer);
        return answer->vt == VT_EMPTY ? S_FALSE : S_OK;
    });
}

HRESULT AccessibleObject::accHitTest(long left, long top, VARIANT* answer) {
    VariantInit(answer);
    return guarded([&] {
        hitTest({left, top}, *answer);
        return answer->vt == VT_EMPTY ? S_FALSE : S_OK;
    });
}

HRESULT AccessibleObject::accDoDefaultAction(VARIANT childId) {
    return forChild(childId, [&](LONG id) { return doAction(id) ? S_OK : DISP_E_MEMBERNOTFOUND; });
}

HRESULT AccessibleObject::put_accName(VARIANT, BSTR) { return DISP_E_MEMBERNOTFOUND; }
HRESULT AccessibleObject::put_accValue(VARIANT, BSTR) { return DISP_E_MEMBERNOTFOUND; }

LRESULT answerObject(WPARAM wParam, LPARAM lParam, const std::function<AccessibleObject*()>& make) {
    // The object's number has 32 bits, which arrive with or without their sign.
    if (static_cast<LONG>(lParam) != OBJID_CLIENT) return 0;
    AccessibleObject* object = make();
    if (!object) return 0;
    const LRESULT answer = ::LresultFromObject(__uuidof(IAccessible), wParam, object);
    object->Release();
    return answer;
}

namespace {

class NamedAccessible : public AccessibleObject {
public:
    // Takes the reference to `own`.
    NamedAccessible(IAccessible* own, std::wstring name) : own_(own), name_(std::move(name)) {}
    ~NamedAccessible() override { own_->Release(); }

    std::wstring name(LONG child) override {
        return child == CHILDID_SELF ? name_ : text(&IAccessible::get_accName, child);
    }
    std::wstring value(LONG child) override { return text(&IAccessible::get_accValue, child); }
    std::wstring action(LONG child) override {
        return text(&IAccessible::get_accDefaultAction, child);
    }
    long role(LONG child) override { return number(&IAccessible::get_accRole, child); }
    long state(LONG child) override { return number(&IAccessible::get_accState, child); }
    RECT location(LONG child) override {
        long left = 0, top = 0, width = 0, height = 0;
        own_->accLocation(&left, &top, &width, &height, id(child));
        return {left, top, left + width, top + height};
    }
    long childCount() override {
        long count = 0;
        own_->get_accChildCount(&count);
        return count;
    }
    IDispatch* child(LONG child) override {
        IDispatch* found = nullptr;
        own_->get_accChild(id(child), &found);
        return found;
    }
    IDispatch* parent() override {
        IDispatch* found = nullptr;
        own_->get_accParent(&found);
        return found;
    }
    void focus(VARIANT& answer) override { own_->get_accFocus(&answer); }
    void selection(VARIANT& answer) override { own_->get_accSelection(&answer); }
    void hitTest(POINT screen, VARIANT& answer) override {
        own_->accHitTest(screen.x, screen.y, &answer);
    }
    void navigate(long direction, LONG child, VARIANT& answer) override {
        own_->accNavigate(direction, id(child), &answer);
    }
    bool select(long flags, LONG child) override {
        return own_->accSelect(flags, id(child)) == S_OK;
    }
    bool doAction(LONG child) override { return own_->accDoDefaultAction(id(child)) == S_OK; }

private:
    static VARIANT id(LONG child) {
        VARIANT variant{};
        variant.vt = VT_I4;
        variant.lVal = child;
        return variant;
    }
    std::wstring text(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, BSTR*), LONG child) {
        BSTR answer = nullptr;
        (own_->*get)(id(child), &answer);
        std::wstring found = answer ? std::wstring(answer, SysStringLen(answer)) : std::wstring();
        SysFreeString(answer);
        return found;
    }
    long number(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, VARIANT*), LONG child) {
        VARIANT answer{};
        (own_->*get)(id(child), &answer);
        const long found = answer.vt == VT_I4 ? answer.lVal : 0;
        VariantClear(&answer);
        return found;
    }

    IAccessible* own_;
    std::wstring name_;
};

}  // namespace

AccessibleObject* makeNamedAccessible(HWND window, const std::wstring& name) {
    void* own = nullptr;
    const HRESULT made =
        ::CreateStdAccessibleObject(window, OBJID_CLIENT, __uuidof(IAccessible), &own);
    return SUCCEEDED(made) && own ? new NamedAccessible(static_cast<IAccessible*>(own), name)
                                  : nullptr;
}

}  // namespace forms
