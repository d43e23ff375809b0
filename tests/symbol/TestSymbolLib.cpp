// The library object and its registry: the ID map and the user order must
// stay consistent, and failures leave exactly the expected log records.

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LqToolkit.h"
#include "TestLibrary.h"

namespace {

using lqtest::TestLibrary;
using lqtest::TestSymbol;
using VTC::VtLogFile;
using ZEDA::ZedaUnicodeString;

// A library that exposes the members a test needs to set or observe.
class OpenLibrary : public TestLibrary {
public:
    void SetGrowStep(unsigned long long step) { idGrowStep = step; }
    void SetVersion(unsigned int value) { version = value; }
    std::size_t ListCapacity() const { return idList.capacity(); }
};

// The log records since the last clear, as "lib:CODE" or "group:CODE".
std::vector<std::string> LoggedCodes()
{
    std::vector<std::string> codes;
    for (const auto& record : VtLogFile::GetInstance(false)->GetRecords()) {
        EXPECT_EQ(record.level, 300);
        EXPECT_GT(record.line, 0);
        if (record.source == "Src/Symbol/VtSymbolLib")
            codes.push_back("lib:" + record.code);
        else if (record.source == "Src/Symbol/VtSymbolGroup")
            codes.push_back("group:" + record.code);
        else
            codes.push_back(record.source + ":" + record.code);
    }
    VtLogFile::GetInstance(false)->ClearRecords();
    return codes;
}

using Codes = std::vector<std::string>;

// Both views name the same symbols in the same order, and the map key of
// every symbol is its ID.
void ExpectConsistent(TestLibrary& lib, const std::vector<int>& expectedOrder)
{
    ASSERT_EQ(lib.GetSymbolCount(), static_cast<int>(expectedOrder.size()));
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        const int id = lib.GetIDAt(i);
        EXPECT_EQ(id, expectedOrder[static_cast<std::size_t>(i)]) << "position " << i;
        VTC::VtSymbol* symbol = lib.GetSymbolAt(i);
        ASSERT_NE(symbol, nullptr);
        EXPECT_EQ(symbol->ID, id);
        EXPECT_EQ(lib.GetSymbolByID(id), symbol);
        EXPECT_EQ(lib.FindID(id), i);
    }
    VtLogFile::GetInstance(false)->ClearRecords();
}

class SymbolLibTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        liveBefore = TestSymbol::liveCount;
        VtLogFile::GetInstance(false)->ClearRecords();
    }
    void TearDown() override { EXPECT_EQ(TestSymbol::liveCount, liveBefore) << "symbols leaked or lost"; }

    // A library holding symbols 1..n named "s1".."sn", not modified, log empty.
    static void Fill(TestLibrary& lib, int n)
    {
        for (int i = 1; i <= n; ++i)
            lib.Add(-1, ZedaUnicodeString::FromUtf8("s" + std::to_string(i)));
        lib.SetModifiedFlag(0);
        VtLogFile::GetInstance(false)->ClearRecords();
    }

    int liveBefore = 0;
};

TEST_F(SymbolLibTest, FreshLibraryIsEmptyWithANamedRootGroup)
{
    TestLibrary lib;
    EXPECT_EQ(lib.GetSymbolCount(), 0);
    EXPECT_EQ(lib.GetVersion(), 0u);
    EXPECT_EQ(lib.IsModified(), 0);
    ASSERT_NE(lib.GetRootGroup(), nullptr);
    EXPECT_EQ(lib.GetRootGroup()->GetGroupName(), ZedaUnicodeString(u"RootGroup"));
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 0);
    EXPECT_EQ(lib.GetRootGroup()->GetChildGroupCount(), 0);
    EXPECT_TRUE(lib.GetLibPath().IsEmpty());
    EXPECT_TRUE(lib.GetDefaultPath().IsEmpty());
    EXPECT_TRUE(lib.GetCachePath().IsEmpty());
    EXPECT_EQ(lib.GetMaxID(), 0);

    lib.SetLibPath(u"a.sym");
    lib.SetDefaultPath(u"b.sym");
    EXPECT_EQ(lib.GetLibPath(), ZedaUnicodeString(u"a.sym"));
    EXPECT_EQ(lib.GetDefaultPath(), ZedaUnicodeString(u"b.sym"));
    lib.SetModifiedFlag(7);
    EXPECT_EQ(lib.IsModified(), 7);

    EXPECT_EQ(lib.GetCompatibleVersion(0), 20120328);
    EXPECT_EQ(lib.GetCompatibleVersion(20050302), 20050302);
    EXPECT_EQ(lib.GetCompatibleVersion(-3), -3);
    EXPECT_TRUE(LoggedCodes().empty());
}

TEST_F(SymbolLibTest, AddSymbolNumbersFilesAndMarks)
{
    TestLibrary lib;
    EXPECT_EQ(lib.Add(-1, u"first"), 1);
    EXPECT_EQ(LoggedCodes(), (Codes{"group:EDd003"}));
    EXPECT_EQ(lib.IsModified(), 1);

    // A fresh non-negative ID is kept; its probe logs that the ID is free.
    EXPECT_EQ(lib.Add(10, u"ten"), 10);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa038", "group:EDd003"}));
    // A used ID is replaced by max + 1.
    EXPECT_EQ(lib.Add(10, u"again"), 11);
    EXPECT_EQ(lib.Add(-5, u"negative"), 12);

    VTC::VtSymbolGroup* child = lib.GetRootGroup()->CreateChildGroup(u"child");
    ASSERT_NE(child, nullptr);
    lib.SetModifiedFlag(0);
    VtLogFile::GetInstance(false)->ClearRecords();
    EXPECT_EQ(lib.Add(0, u"zero", child), 0);
    // Every group of the tree is searched for the ID before it is filed.
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa038", "group:EDd003", "group:EDd003"}));
    EXPECT_EQ(lib.IsModified(), 1);

    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 4);
    EXPECT_EQ(child->GetItemCount(), 1);
    EXPECT_EQ(child->GetItemID(0), 0);
    ExpectConsistent(lib, {1, 10, 11, 12, 0});
}

TEST_F(SymbolLibTest, GrowStepRaisesCapacityByItsAmount)
{
    OpenLibrary lib;
    lib.SetGrowStep(3);
    for (int i = 0; i < 4; ++i)
        lib.Add(-1, u"s");
    EXPECT_EQ(lib.ListCapacity(), 6u);
    lib.RemoveAll();
    EXPECT_EQ(lib.ListCapacity(), 0u);
}

TEST_F(SymbolLibTest, RawInsertionKeepsGroupsAndFlagAlone)
{
    TestLibrary lib;
    lib.InsertAt(0, new TestSymbol(5, u"five"));
    lib.InsertAt(-1, new TestSymbol(7, u"seven"));
    lib.InsertAt(0, new TestSymbol(3, u"three"));
    lib.InsertAt(100, new TestSymbol(9, u"nine"));
    lib.InsertAt(1, new TestSymbol(-2, u"minus two"));
    ExpectConsistent(lib, {3, -2, 5, 7, 9});
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 0);
    EXPECT_EQ(lib.IsModified(), 0);
    EXPECT_EQ(lib.GetMaxID(), 9);

    TestLibrary negatives;
    negatives.InsertAt(0, new TestSymbol(-4, u"a"));
    negatives.InsertAt(0, new TestSymbol(-9, u"b"));
    EXPECT_EQ(negatives.GetMaxID(), 0);
}

TEST_F(SymbolLibTest, RemoveAtTakesARunOfPositions)
{
    TestLibrary lib;
    Fill(lib, 5);
    const int live = TestSymbol::liveCount;

    EXPECT_EQ(lib.RemoveAt(5, 5), 0);
    EXPECT_TRUE(LoggedCodes().empty());
    EXPECT_EQ(lib.RemoveAt(0, 0), 0);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EDb001", "lib:EGa020"}));
    EXPECT_EQ(lib.RemoveAt(-1, 1), 0);
    EXPECT_EQ(lib.RemoveAt(6, 1), 0);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EDb001", "lib:EGa020", "lib:EDb001", "lib:EGa020"}));
    EXPECT_EQ(TestSymbol::liveCount, live);

    EXPECT_EQ(lib.RemoveAt(2, 100), 3);
    EXPECT_EQ(TestSymbol::liveCount, live - 3);
    ExpectConsistent(lib, {1, 2});
    EXPECT_EQ(lib.RemoveAt(0, 0x7fffffff), 2);
    EXPECT_EQ(lib.GetSymbolCount(), 0);
    // Groups are not told; the flag stays.
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 5);
    EXPECT_EQ(lib.IsModified(), 0);
    EXPECT_TRUE(LoggedCodes().empty());
}

TEST_F(SymbolLibTest, RemoveIdDestroysOnlyListedSymbols)
{
    TestLibrary lib;
    Fill(lib, 3);
    const int live = TestSymbol::liveCount;

    EXPECT_EQ(lib.RemoveID(42), 0);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa038", "lib:EGa030", "lib:EGa022"}));
    EXPECT_EQ(lib.RemoveID(2), 1);
    EXPECT_TRUE(LoggedCodes().empty());
    EXPECT_EQ(TestSymbol::liveCount, live - 1);
    ExpectConsistent(lib, {1, 3});
    EXPECT_EQ(lib.GetRootGroup()->GetItemCount(), 3);
}

TEST_F(SymbolLibTest, SwapAndSortReorderOnlyTheList)
{
    TestLibrary lib;
    Fill(lib, 4);
    VTC::VtSymbol* second = lib.GetSymbolByID(2);

    EXPECT_EQ(lib.Swap(-1, 0), 0);
    EXPECT_EQ(lib.Swap(0, 4), 0);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EDb009", "lib:EDb009"}));

    EXPECT_EQ(lib.Swap(0, 3), 1);
    EXPECT_EQ(lib.Swap(1, 2), 1);
    ExpectConsistent(lib, {4, 3, 2, 1});
    EXPECT_EQ(lib.GetSymbolByID(2), second);
    EXPECT_EQ(lib.GetRootGroup()->GetItemID(0), 1);

    lib.SortByID();
    ExpectConsistent(lib, {1, 2, 3, 4});
    EXPECT_EQ(lib.IsModified(), 0);
}

TEST_F(SymbolLibTest, SetIdAtRenumbersBothViews)
{
    TestLibrary lib;
    Fill(lib, 3);
    VTC::VtSymbol* middle = lib.GetSymbolAt(1);
    VtLogFile::GetInstance(false)->ClearRecords();

    // Success still leaves the record of the free-ID probe.
    EXPECT_EQ(lib.SetIDAt(1, 20), 1);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa038"}));
    EXPECT_EQ(middle->ID, 20);
    EXPECT_EQ(lib.GetSymbolByID(2), nullptr);
    ExpectConsistent(lib, {1, 20, 3});

    EXPECT_EQ(lib.SetIDAt(0, 3), 0);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa048"}));
    ExpectConsistent(lib, {1, 20, 3});

    EXPECT_THROW(lib.SetIDAt(-1, 50), std::out_of_range);
    EXPECT_THROW(lib.SetIDAt(3, 50), std::out_of_range);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa038", "lib:EGa038"}));

    EXPECT_EQ(lib.GetMaxID(), 20);
    EXPECT_EQ(lib.Add(-1, u"next"), 21);
}

TEST_F(SymbolLibTest, BadIndicesThrowOrLog)
{
    TestLibrary lib;
    Fill(lib, 2);
    EXPECT_THROW(lib.GetIDAt(-1), std::out_of_range);
    EXPECT_THROW(lib.GetIDAt(2), std::out_of_range);
    EXPECT_THROW(lib.GetNameAt(2), std::out_of_range);
    EXPECT_THROW(lib.SetNameAt(-1, u"x"), std::out_of_range);
    EXPECT_TRUE(LoggedCodes().empty());

    EXPECT_EQ(lib.GetSymbolAt(-1), nullptr);
    EXPECT_EQ(lib.GetSymbolAt(2), nullptr);
    EXPECT_EQ(lib.GetSymbolByID(9), nullptr);
    EXPECT_EQ(lib.FindID(9), -1);
    EXPECT_EQ(lib.IsIDExisted(9), 0);
    EXPECT_EQ(LoggedCodes(),
              (Codes{"lib:EDb001", "lib:EGa004", "lib:EDb001", "lib:EGa004", "lib:EGa038", "lib:EGa038",
                     "lib:EGa038"}));
    EXPECT_EQ(lib.IsIDExisted(2), 1);
}

TEST_F(SymbolLibTest, ListedIdWithoutSymbolIsReportedNotDereferenced)
{
    // Inserting an existing ID lists it twice; removing it once leaves a
    // position whose ID the map no longer holds.
    TestLibrary lib;
    Fill(lib, 2);
    auto* replaced = lib.GetSymbolByID(2);
    lib.InsertAt(0, new TestSymbol(2, u"twin"));
    delete replaced;
    EXPECT_EQ(lib.RemoveID(2), 1);
    ASSERT_EQ(lib.GetSymbolCount(), 2);
    EXPECT_EQ(lib.GetIDAt(1), 2);
    VtLogFile::GetInstance(false)->ClearRecords();

    EXPECT_EQ(lib.GetSymbolAt(1), nullptr);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EDb002"}));
    EXPECT_TRUE(lib.GetNameAt(1).IsEmpty());
    lib.SetNameAt(1, u"ignored");
    EXPECT_EQ(lib.FindName(u"ignored", 0), -1);
    EXPECT_EQ(lib.SetIDAt(1, 30), 0);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa030", "lib:EGa038", "lib:EGa038"}));
    EXPECT_EQ(lib.RemoveAt(0, 2), 2);
}

TEST_F(SymbolLibTest, HandedOutSymbolsCarryTheLibraryVersion)
{
    OpenLibrary lib;
    lib.Add(-1, u"a");
    lib.SetVersion(20050302);
    EXPECT_EQ(lib.GetSymbolByID(1)->libVersion, 20050302u);
    lib.SetVersion(20120328);
    EXPECT_EQ(lib.GetSymbolAt(0)->libVersion, 20120328u);
    EXPECT_EQ(lib.GetVersion(), 20120328u);
}

TEST_F(SymbolLibTest, NameSearchesByPositionAndById)
{
    TestLibrary lib;
    lib.Add(5, u"same");
    lib.Add(2, u"other");
    lib.Add(1, u"same");
    lib.Add(8, u"last");
    VtLogFile::GetInstance(false)->ClearRecords();

    // List order 5, 2, 1, 8: the first "same" by position is ID 5, by ID it is 1.
    EXPECT_EQ(lib.FindName(u"same", 0), 0);
    EXPECT_EQ(lib.FindName(u"same", 1), 2);
    EXPECT_EQ(lib.GetIDByName(u"same"), 1);
    EXPECT_EQ(lib.GetIDByName(u"SAME"), -1);
    EXPECT_TRUE(LoggedCodes().empty());

    EXPECT_EQ(lib.FindName(u"same", 3), -1);
    EXPECT_EQ(lib.FindName(u"same", 4), -1);
    EXPECT_EQ(lib.FindName(u"same", -1), -1);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa030", "lib:EDb001", "lib:EGa026", "lib:EDb001", "lib:EGa026"}));

    // 0 and any start past the end search from the last position.
    EXPECT_EQ(lib.ReverseFindName(u"same", 0), 2);
    EXPECT_EQ(lib.ReverseFindName(u"same", 99), 2);
    EXPECT_EQ(lib.ReverseFindName(u"same", 1), 0);
    EXPECT_EQ(lib.ReverseFindName(u"last", 2), -1);
    EXPECT_EQ(lib.ReverseFindName(u"last", -1), -1);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EGa031", "lib:EGa026", "lib:EEb016"}));

    lib.SetNameAt(3, u"renamed");
    EXPECT_EQ(lib.GetNameAt(3), ZedaUnicodeString(u"renamed"));
    EXPECT_EQ(lib.GetSymbolByID(8)->name, ZedaUnicodeString(u"renamed"));

    TestLibrary empty;
    EXPECT_EQ(empty.ReverseFindName(u"x", 0), -1);
    EXPECT_EQ(LoggedCodes(), (Codes{"lib:EEb016"}));
}

TEST_F(SymbolLibTest, RemoveAllKeepsAnEmptyRootGroup)
{
    TestLibrary lib;
    VTC::VtSymbolGroup* child = lib.GetRootGroup()->CreateChildGroup(u"child");
    lib.Add(-1, u"a", child);
    lib.Add(-1, u"b");
    VTC::VtSymbolGroup* root = lib.GetRootGroup();
    lib.SetModifiedFlag(0);

    lib.RemoveAll();
    EXPECT_EQ(lib.GetRootGroup(), root);
    EXPECT_EQ(root->GetItemCount(), 0);
    EXPECT_EQ(root->GetChildGroupCount(), 0);
    EXPECT_EQ(lib.GetSymbolCount(), 0);
    EXPECT_EQ(lib.IsModified(), 0);
    EXPECT_EQ(lib.Add(-1, u"again"), 1);
}

TEST_F(SymbolLibTest, GroupsRenumberAndRemoveThroughTheRegistry)
{
    TestLibrary lib;
    VTC::VtSymbolGroup* child = lib.GetRootGroup()->CreateChildGroup(u"child");
    lib.Add(-1, u"a");
    lib.Add(-1, u"b", child);
    const int live = TestSymbol::liveCount;

    EXPECT_TRUE(child->SetItemID(0, 40));
    ExpectConsistent(lib, {1, 40});
    EXPECT_EQ(child->GetItemID(0), 40);

    EXPECT_TRUE(lib.GetRootGroup()->RemoveSymbol(40));
    EXPECT_EQ(TestSymbol::liveCount, live - 1);
    ExpectConsistent(lib, {1});
    EXPECT_EQ(child->GetItemCount(), 0);
}

}  // namespace
