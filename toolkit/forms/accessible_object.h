// AccessibleObject: base class of the objects that describe a window to screen readers.
//
//   LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
//       if (message != WM_GETOBJECT) return Window::handleMessage(message, wParam, lParam);
//       return forms::answerObject(wParam, lParam, [] { return new Gauge; });
//   }
//
// The user-interface thread, through whose message pump the calls of screen readers come in.
//
// Reference counted; created with one reference, which belongs to the creator. Screen readers run
// in other processes and may keep an object longer than its window, so derived classes must still
// answer then. Child 0 (CHILDID_SELF) is the object itself. No exception leaves a call.
#pragma once

#include <windows.h>

// After windows.h, which it needs.
#include <oleacc.h>

#include <functional>
#include <string>

namespace forms {

// COM interfaces have no destructors: an object ends in its own Release.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class AccessibleObject : public IAccessible {
public:
    AccessibleObject() = default;
    AccessibleObject(const AccessibleObject&) = delete;
    AccessibleObject& operator=(const AccessibleObject&) = delete;

    /// Implemented by derived classes. An empty text means none. Texts, roles and states are those
    /// of IAccessible; the rectangle is in screen pixels.
    virtual std::wstring name(LONG child) = 0;
    virtual std::wstring value(LONG /*child*/) { return {}; }
    virtual std::wstring action(LONG /*child*/) { return {}; }
    virtual long role(LONG child) = 0;
    virtual long state(LONG child) = 0;
    virtual RECT location(LONG child) = 0;
    virtual long childCount() = 0;
    /// Null if there is none; else with a reference for the caller.
    virtual IDispatch* child(LONG child) = 0;
    virtual IDispatch* parent() = 0;
    /// These may leave the variant empty.
    virtual void focus(VARIANT& answer) = 0;
    virtual void selection(VARIANT& answer) = 0;
    virtual void hitTest(POINT screen, VARIANT& answer) = 0;
    virtual void navigate(long direction, LONG child, VARIANT& answer) = 0;
    /// False if it is not possible.
    virtual bool select(long flags, LONG child) = 0;
    virtual bool doAction(LONG child) = 0;

    /// IUnknown, IDispatch and IAccessible.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* badArgument) override;
    HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** answer) override;
    HRESULT STDMETHODCALLTYPE get_accChildCount(long* answer) override;
    HRESULT STDMETHODCALLTYPE get_accChild(VARIANT childId, IDispatch** answer) override;
    HRESULT STDMETHODCALLTYPE get_accName(VARIANT childId, BSTR* answer) override;
    HRESULT STDMETHODCALLTYPE get_accValue(VARIANT childId, BSTR* answer) override;
    HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT childId, BSTR* answer) override;
    HRESULT STDMETHODCALLTYPE get_accRole(VARIANT childId, VARIANT* answer) override;
    HRESULT STDMETHODCALLTYPE get_accState(VARIANT childId, VARIANT* answer) override;
    HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT childId, BSTR* answer) override;
    HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT childId, long* topic) override;
    HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT childId, BSTR* answer) override;
    HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* answer) override;
    HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* answer) override;
    HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT childId, BSTR* answer) override;
    HRESULT STDMETHODCALLTYPE accSelect(long flags, VARIANT childId) override;
    HRESULT STDMETHODCALLTYPE accLocation(long* left, long* top, long* width, long* height,
                                          VARIANT childId) override;
    HRESULT STDMETHODCALLTYPE accNavigate(long direction, VARIANT childId,
                                          VARIANT* answer) override;
    HRESULT STDMETHODCALLTYPE accHitTest(long left, long top, VARIANT* answer) override;
    HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT childId) override;
    HRESULT STDMETHODCALLTYPE put_accName(VARIANT childId, BSTR name) override;
    HRESULT STDMETHODCALLTYPE put_accValue(VARIANT childId, BSTR value) override;

protected:
    virtual ~AccessibleObject() = default;

private:
    ULONG references_ = 1;
};

#pragma GCC diagnostic pop

/// The answer to WM_GETOBJECT for a window's client object; 0 for other objects, which are left to
/// the window's own procedure. `make` returns an object with one reference.
LRESULT answerObject(WPARAM wParam, LPARAM lParam, const std::function<AccessibleObject*()>& make);

/// The window's standard object, under another name. Null if the system provides none.
AccessibleObject* makeNamedAccessible(HWND window, const std::wstring& name);

}  // namespace forms
