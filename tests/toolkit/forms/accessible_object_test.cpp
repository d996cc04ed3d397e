// What screen readers are told of controls.
#include "tests/support/accessible_client.h"
#include "tests/toolkit/forms/forms_fixture.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/text_box.h"
#include "toolkit/forms/tree_view.h"

using namespace forms_test;

namespace {

class AccessibleControlsTest : public FormsTest {
protected:
    AccessibleControlsTest() {
        form.onBuild = [this] {
            form.createControls({
                {box, {L"box", L"some text", 100_tw, 100_tw, 1500_tw, 300_tw}},
                {tree, {L"tree", L"", 100_tw, 500_tw, 1500_tw, 900_tw}},
                {button, {L"button", L"&Apply", 100_tw, 1500_tw, 1500_tw, 300_tw}},
            });
        };
        form.show();
    }
    ~AccessibleControlsTest() override { form.destroy(); }

    PlainForm form;
    forms::TextBox box;
    forms::TreeView tree{{.checkBoxes = true}};
    forms::Button button;
};

TEST_F(AccessibleControlsTest, AControlHasTheNameItWasGivenAndTheRestOfTheSystem) {
    const AccessibleClient before{box.hwnd()};
    ASSERT_TRUE(before);
    EXPECT_EQ(before.name(), L"");
    box.setAccessibleName(L"Diagnostic");
    tree.setAccessibleName(L"Filters");
    const AccessibleClient named{box.hwnd()};
    ASSERT_TRUE(named);
    EXPECT_EQ(named.name(), L"Diagnostic");
    EXPECT_EQ(named.role(), before.role());
    EXPECT_EQ(named.value(), before.value());
    const RECT place = named.location();
    RECT window{};
    ::GetWindowRect(box.hwnd(), &window);
    EXPECT_GE(place.left, window.left);
    EXPECT_LE(place.right, window.right);
    EXPECT_EQ(AccessibleClient{tree.hwnd()}.name(), L"Filters");
}

TEST_F(AccessibleControlsTest, ACaptionIsAName) {
    EXPECT_EQ(AccessibleClient{button.hwnd()}.name(), L"Apply");
}

TEST_F(AccessibleControlsTest, OtherQuestionsAreTheSystemsToAnswer) {
    box.setAccessibleName(L"Diagnostic");
    EXPECT_EQ(::SendMessageW(box.hwnd(), WM_GETOBJECT, 0, OBJID_VSCROLL), 0);
}

}  // namespace
