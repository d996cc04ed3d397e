// The Filters tab for a file that cannot be upgraded.
#include "src/db/trace_filter.h"
#include "src/text/text.h"
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

std::vector<char> contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

class ComputedFiltersWindowTest : public MainWindowTest {
protected:
    ~ComputedFiltersWindowTest() override { modDatabase::connectToDB(u""); }

    bool waitForTree() {
        return waitUntil([this] { return form.tvUniqueTraces.nodeCount() > 0; }) && waitLoaded();
    }

    /// Keys and texts of all nodes.
    std::vector<std::wstring> tree() {
        std::vector<std::wstring> nodes;
        for (int i = 0; i < form.tvUniqueTraces.nodeCount(); ++i) {
            forms::TreeNode& node = form.tvUniqueTraces.node(i);
            nodes.push_back(node.key() + L": " + node.text() + L": " + node.tag());
        }
        return nodes;
    }

    /// Ticks one unique trace, as the user does; returns how many lines are left.
    int filterBy(std::size_t row) {
        form.cmdClearAllUniqueTraces.onClick();
        forms::TreeNode& node = form.tvUniqueTraces.node(toWide(itemKey(row)));
        node.setChecked(true);
        form.tvUniqueTraces.onNodeCheck(node);
        form.cmdApplyFilter.onClick();
        EXPECT_TRUE(waitLoaded());
        return static_cast<int>(form.tdbgridData.approxCount());
    }
};

TEST_F(ComputedFiltersWindowTest, AReadOnlyFileFillsTheTreeAndIsFilteredUnchanged) {
    const auto path = makeFile("older.mdb", 3000, fixture::TraceFormat::Older);
    const auto copy = folder.path() / "copy.mdb";
    std::filesystem::copy_file(path, copy);
    open(copy);
    ASSERT_TRUE(waitForTree());
    const auto upgradedTree = tree();
    const int upgradedRows = filterBy(3);
    modDatabase::connectToDB(u"");

    const auto content = contentOf(path);
    ASSERT_FALSE(contentOf(copy) == content) << "the copy has not been upgraded";
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    open(path);
    ASSERT_TRUE(waitForTree());
    EXPECT_EQ(tree(), upgradedTree);
    EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->checked());
    EXPECT_EQ(form.tdbgridData.approxCount(), 3000);
    const int rowsLeft = filterBy(3);
    EXPECT_EQ(rowsLeft, upgradedRows);
    EXPECT_GT(rowsLeft, 0);
    EXPECT_LT(rowsLeft, 3000);
    EXPECT_EQ(tree(), upgradedTree) << "the tree outlives the filter";
    for (std::uint32_t row = 0; row < rows().rowCount(); ++row) {
        ASSERT_EQ(rows().valueAt(row, 4), modDatabase::uniqueTraces()[3].component);
    }
    form.cmdSelectAllUniqueTraces.onClick();
    form.cmdApplyFilter.onClick();
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.tdbgridData.approxCount(), 3000);
    modDatabase::connectToDB(u"");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    EXPECT_TRUE(contentOf(path) == content);
}

}  // namespace
