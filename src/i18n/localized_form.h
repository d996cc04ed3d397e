// A form whose captions come from the texts by number. All of them are set in one procedure, which
// runs when the form is loaded and again whenever the language changes.
//
//   class frmStatus : public modLocalize::LocalizedForm {
//   public:
//       void frmStatus_Auto_Init();
//   private:
//       void Auto_Init() override { frmStatus_Auto_Init(); }
//   };
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/form.h"

namespace modLocalize {

class LocalizedForm : public forms::Form {
public:
    using Form::Form;

    /// Sets all captions. Requires: the form is loaded.
    virtual void Auto_Init() = 0;
};

}  // namespace modLocalize
