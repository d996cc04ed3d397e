// What a screen reader does: asks a window's object for names, values and places.
//
//   AccessibleClient table{window};
//   table.child(2).child(1).value();
//
// For windows of any process. The thread needs an OleSession.
#pragma once

#include <windows.h>
#include <ole2.h>
#include <oleacc.h>

#include <memory>
#include <string>

/// COM and OLE for the thread, as long as this lives.
struct OleSession {
    OleSession() { OleInitialize(nullptr); }
    ~OleSession() { OleUninitialize(); }
    OleSession(const OleSession&) = delete;
    OleSession& operator=(const OleSession&) = delete;
};

class AccessibleClient {
public:
    /// The object for the inside of a window; empty if it gives none.
    explicit AccessibleClient(HWND window) {
        void* found = nullptr;
        ::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT),
                                     __uuidof(IAccessible), &found);
        object_.reset(static_cast<IAccessible*>(found));
    }

    /// Takes the reference in the variant, or in the dispatch interface.
    explicit AccessibleClient(const VARIANT& answer)
        : AccessibleClient(answer.vt == VT_DISPATCH ? answer.pdispVal : nullptr) {}
    explicit AccessibleClient(IDispatch* answer) {
        void* found = nullptr;
        if (answer != nullptr) {
            answer->QueryInterface(__uuidof(IAccessible), &found);
            answer->Release();
        }
        object_.reset(static_cast<IAccessible*>(found));
    }

    explicit operator bool() const { return object_ != nullptr; }
    IAccessible* operator->() const { return object_.get(); }

    static VARIANT id(LONG child) {
        VARIANT variant{};
        variant.vt = VT_I4;
        variant.lVal = child;
        return variant;
    }

    std::wstring name(LONG child = CHILDID_SELF) const {
        return text(&IAccessible::get_accName, child);
    }
    std::wstring value(LONG child = CHILDID_SELF) const {
        return text(&IAccessible::get_accValue, child);
    }
    std::wstring action(LONG child = CHILDID_SELF) const {
        return text(&IAccessible::get_accDefaultAction, child);
    }
    long role(LONG child = CHILDID_SELF) const { return number(&IAccessible::get_accRole, child); }
    long state(LONG child = CHILDID_SELF) const {
        return number(&IAccessible::get_accState, child);
    }
    long childCount() const {
        long count = -1;
        object_->get_accChildCount(&count);
        return count;
    }
    AccessibleClient child(LONG number) const {
        IDispatch* found = nullptr;
        object_->get_accChild(id(number), &found);
        return AccessibleClient{found};
    }
    AccessibleClient parent() const {
        IDispatch* found = nullptr;
        object_->get_accParent(&found);
        return AccessibleClient{found};
    }
    AccessibleClient focus() const {
        VARIANT answer{};
        object_->get_accFocus(&answer);
        return AccessibleClient{answer};
    }
    AccessibleClient next(long direction, LONG child = CHILDID_SELF) const {
        VARIANT answer{};
        object_->accNavigate(direction, id(child), &answer);
        return AccessibleClient{answer};
    }
    AccessibleClient at(POINT screen) const {
        VARIANT answer{};
        object_->accHitTest(screen.x, screen.y, &answer);
        return AccessibleClient{answer};
    }
    RECT location(LONG child = CHILDID_SELF) const {
        long left = 0, top = 0, width = 0, height = 0;
        object_->accLocation(&left, &top, &width, &height, id(child));
        return {left, top, left + width, top + height};
    }

private:
    struct Release {
        void operator()(IAccessible* object) const { object->Release(); }
    };

    std::wstring text(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, BSTR*),
                      LONG child) const {
        BSTR answer = nullptr;
        (object_.get()->*get)(id(child), &answer);
        std::wstring found = answer ? std::wstring(answer, SysStringLen(answer)) : std::wstring();
        SysFreeString(answer);
        return found;
    }
    long number(HRESULT (STDMETHODCALLTYPE IAccessible::*get)(VARIANT, VARIANT*),
                LONG child) const {
        VARIANT answer{};
        (object_.get()->*get)(id(child), &answer);
        return answer.vt == VT_I4 ? answer.lVal : -1;
    }

    std::unique_ptr<IAccessible, Release> object_;
};
