// The library object and its registry: the ID map and the user order must
// stay consistent, and failures leave exactly the expected log records.

#include <limits>
#include <stdexcept>
#include <tuple>

#include "TestLibrary.h"

namespace {

using lqtest::TestLibrary;
using lqtest::TestSymbol;
using ZEDA::ZedaUnicodeString;

// A library that exposes the members a test needs to set or observe.
class OpenLibrary : public TestLibrary {
public:
    void SetVersion(unsigned int value) { version = value; }
    std::size_t ListCapacity() const { return idList.capacity(); }
};

// Both views name the same symbols in `order`, and each symbol's map key is its ID.
void ExpectConsistent(TestLibrary& lib, const std::vector<int>& order)
{
    ASSERT_EQ(lib.GetSymbolCount(), static_cast<int>(order.size()));
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        const int id = lib.GetIDAt(i);
        EXPECT_EQ(id, order[static_cast<std::size_t>(i)]) << "position " << i;
        VTC::VtSymbol* symbol = lib.GetSymbolAt(i);
        ASSERT_NE(symbol, nullptr);
        EXPECT_EQ(symbol->ID, id);
        EXPECT_EQ(lib.GetSymbolByID(id), symbol);
        EXPECT_EQ(lib.FindID(id), i);
    }
}

class SymbolLibTest : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(TestSymbol::liveCount, liveBefore) << "symbols leaked or lost"; }

    // Symbols 1..n filed in the root, the flag cleared.
    static void Fill(TestLibrary& lib, int n)
    {
        for (int i = 1; i <= n; ++i)
            lib.Add(-1, ZedaUnicodeString::FromUtf8("s" + std::to_string(i)));
        lib.SetModifiedFlag(0);
    }

    const int liveBefore = TestSymbol::liveCount;
};

TEST_F(SymbolLibTest, FreshAndClearedLibrariesKeepAnEmptyRootGroup)
{
    OpenLibrary lib;
    VTC::VtSymbolGroup* root = lib.GetRootGroup();
    EXPECT_EQ(root->GetGroupName(), ZedaUnicodeString(u"RootGroup"));
    EXPECT_EQ(lib.GetVersion() + lib.IsModified(), 0u);
    EXPECT_TRUE(lib.GetLibPath().IsEmpty() && lib.GetDefaultPath().IsEmpty() && lib.GetCachePath().IsEmpty());
    EXPECT_EQ(lib.GetCompatibleVersion(0), 20120328);
    lib.Add(-1, u"a", root->CreateChildGroup(u"child"));
    lib.SetModifiedFlag(0);
    lib.RemoveAll();
    EXPECT_EQ(lib.GetRootGroup(), root);
    EXPECT_EQ(lib.GetSymbolCount() + root->GetItemCount() + root->GetChildGroupCount() + lib.IsModified(), 0);
    EXPECT_EQ(lib.ListCapacity(), 0u);
    lib.InsertAt(0, new TestSymbol(-4, u"negative"));
    EXPECT_EQ(lib.Add(-1, u"again"), 1);  // the highest ID counts as 0 at least
}

TEST_F(SymbolLibTest, AddSymbolNumbersFilesAndMarks)
{
    OpenLibrary lib;
    EXPECT_LOGS(EXPECT_EQ(lib.Add(-1, u"first"), 1), "group:EDd003");
    // A fresh non-negative ID is kept; its probe logs that the ID is free.
    EXPECT_LOGS(EXPECT_EQ(lib.Add(10, u"ten"), 10), "lib:EGa038", "group:EDd003");
    // A used or negative ID is replaced by max + 1.
    EXPECT_EQ(lib.Add(10, u"again"), 11);
    EXPECT_EQ(lib.Add(-5, u"negative"), 12);
    VTC::VtSymbolGroup* child = lib.GetRootGroup()->CreateChildGroup(u"child");
    lib.SetModifiedFlag(0);
    EXPECT_EQ(lib.Add(0, u"zero", child), 0);
    EXPECT_EQ(lib.IsModified(), 1);
    EXPECT_EQ(child->GetItemID(0), 0);
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 4);
    ExpectConsistent(lib, {1, 10, 11, 12, 0});
}

TEST_F(SymbolLibTest, NumberingStopsAtTheLargestIdWithoutLosingAnything)
{
    constexpr int largest = std::numeric_limits<int>::max();
    OpenLibrary lib;
    lib.InsertAt(-1, new TestSymbol(largest - 2, u"loaded"));
    EXPECT_EQ(lib.Add(-1, u"next"), largest - 1);
    EXPECT_EQ(lib.Add(largest - 1, u"taken"), largest);
    lib.SetModifiedFlag(0);
    for (const int id : {-1, largest - 2}) {
        TestSymbol refused(id, u"refused");
        EXPECT_LOGS(EXPECT_EQ(lib.AddSymbol(&refused, nullptr), 0), "lib:EGa049");
        EXPECT_EQ(refused.ID, id);  // the caller keeps its symbol as it was
    }
    EXPECT_EQ(lib.IsModified(), 0);
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 2);
    ExpectConsistent(lib, {largest - 2, largest - 1, largest});
    // A free ID is still taken as it comes.
    EXPECT_EQ(lib.Add(7, u"free"), 7);
}

TEST_F(SymbolLibTest, RemovalsDestroyExactlyWhatTheyTake)
{
    TestLibrary lib;
    Fill(lib, 6);
    const int live = TestSymbol::liveCount;
    EXPECT_LOGS(EXPECT_EQ(lib.RemoveAt(6, 5), 0));
    for (const auto& [index, count] : {std::pair{0, 0}, {-1, 1}, {7, 1}})
        EXPECT_LOGS(EXPECT_EQ(lib.RemoveAt(index, count), 0), "lib:EDb001", "lib:EGa020");
    EXPECT_EQ(lib.RemoveAt(1, 2), 2);
    EXPECT_EQ(lib.RemoveAt(2, 100), 2);
    EXPECT_EQ(lib.RemoveID(4), 1);
    EXPECT_EQ(TestSymbol::liveCount, live - 5);
    ExpectConsistent(lib, {1});
    EXPECT_EQ(lib.RemoveAt(0, 0x7fffffff), 1);
    EXPECT_EQ(lib.GetSymbolCount() + lib.IsModified(), 0);  // groups are not told, the flag stays
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 6);
}

TEST_F(SymbolLibTest, SwapSortAndRenumberKeepBothViews)
{
    TestLibrary lib;
    Fill(lib, 4);
    EXPECT_LOGS(EXPECT_EQ(lib.Swap(-1, 0) + lib.Swap(0, 4), 0), "lib:EDb009", "lib:EDb009");
    EXPECT_EQ(lib.Swap(0, 3) + lib.Swap(1, 2), 2);
    ExpectConsistent(lib, {4, 3, 2, 1});
    lib.SortByID();
    ExpectConsistent(lib, {1, 2, 3, 4});
    EXPECT_EQ(lib.SetIDAt(1, 20), 1);
    EXPECT_EQ(lib.SetIDAt(0, 3), 0);
    EXPECT_THROW(lib.SetIDAt(-1, 50), std::out_of_range);
    EXPECT_THROW(lib.SetIDAt(4, 50), std::out_of_range);
    EXPECT_EQ(lib.GetSymbolByID(2), nullptr);
    ExpectConsistent(lib, {1, 20, 3, 4});
    // Neither the groups nor the flag followed.
    EXPECT_EQ(lib.GetRootGroup()->GetItemID(1), 2);
    EXPECT_EQ(lib.IsModified(), 0);
    EXPECT_EQ(lib.Add(-1, u"next"), 21);
}

TEST_F(SymbolLibTest, RawInsertionAndLookupsByIndexIdAndName)
{
    OpenLibrary lib;
    const std::tuple<int, int, const char16_t*> inserted[] = {{0, 2, u"other"}, {100, 8, u"last"}, {0, 5, u"same"},
                                                               {2, 1, u"same"}, {-1, 9, u"tail"}};
    for (const auto& [index, id, name] : inserted)
        lib.InsertAt(index, new TestSymbol(id, name));
    ExpectConsistent(lib, {5, 2, 1, 8, 9});
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount() + lib.IsModified(), 0);  // no groups, no flag
    lib.SetVersion(20050302);
    EXPECT_THROW(lib.GetIDAt(5), std::out_of_range);
    EXPECT_THROW(lib.GetNameAt(-1), std::out_of_range);
    EXPECT_LOGS(EXPECT_EQ(lib.GetSymbolAt(5), nullptr), "lib:EDb001", "lib:EGa004");
    EXPECT_EQ(lib.GetSymbolAt(3)->libVersion, 20050302u);  // handed-out symbols carry the library's version

    // The first "same" by position is ID 5, by ID it is 1.
    EXPECT_LOGS(EXPECT_EQ(lib.FindName(u"same", 1), 2));
    EXPECT_LOGS(EXPECT_EQ(lib.GetIDByName(u"same"), 1));
    EXPECT_LOGS(EXPECT_EQ(lib.FindName(u"same", 3), -1), "lib:EGa030");
    EXPECT_LOGS(EXPECT_EQ(lib.FindName(u"same", 5), -1), "lib:EDb001", "lib:EGa026");
    // 0 means from the last position.
    EXPECT_LOGS(EXPECT_EQ(lib.ReverseFindName(u"same", 0), 2));
    EXPECT_EQ(lib.ReverseFindName(u"same", 1), 0);
    EXPECT_LOGS(EXPECT_EQ(lib.ReverseFindName(u"last", 2), -1), "lib:EGa031", "lib:EGa026");
    EXPECT_LOGS(EXPECT_EQ(lib.ReverseFindName(u"last", -1), -1), "lib:EEb016");

    // A listed ID that the map lacks (InsertAt of a listed ID, then removal) is reported, not dereferenced.
    auto* replaced = lib.GetSymbolByID(2);
    lib.InsertAt(0, new TestSymbol(2, u"twin"));
    delete replaced;
    EXPECT_EQ(lib.RemoveID(2), 1);
    EXPECT_LOGS(EXPECT_EQ(lib.GetSymbolAt(1), nullptr), "lib:EDb002");
}

}  // namespace
