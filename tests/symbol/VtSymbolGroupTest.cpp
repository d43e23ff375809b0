#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "LqStream.h"
#include "LqToolkit.h"
#include "TestLibrary.h"

namespace {

using lqtest::TestLibrary;
using lqtest::TestSymbol;
using VTC::VtMemoryStream;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

using LogEntry = std::tuple<int, std::string, std::string>;
using Log = std::vector<LogEntry>;

LogEntry G(const char* code)
{
    return {300, code, "Src/Symbol/VtSymbolGroup"};
}

LogEntry L(const char* code)
{
    return {300, code, "Src/Symbol/VtSymbolLib"};
}

Log Repeat(const LogEntry& entry, int times)
{
    return Log(times, entry);
}

Log operator+(Log a, const Log& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The records written since the last call, oldest first.
Log TakeLog()
{
    auto* logFile = VTC::VtLogFile::GetInstance(false);
    Log taken;
    for (const auto& record : logFile->GetRecords())
        taken.emplace_back(record.level, record.code, record.source);
    logFile->ClearRecords();
    return taken;
}

std::vector<int> Items(const VtSymbolGroup* group)
{
    std::vector<int> ids;
    for (int i = 0; i < group->GetItemCount(); ++i)
        ids.push_back(group->GetItemID(i));
    return ids;
}

std::vector<std::u16string> ChildNames(const VtSymbolGroup* group)
{
    std::vector<std::u16string> names;
    for (int i = 0; i < group->GetChildGroupCount(); ++i)
        names.push_back(group->GetChildGroup(i)->GetGroupName().Str());
    return names;
}

// Little-endian bytes built by hand, as the stream should write them.
struct Bytes {
    std::vector<unsigned char> data;

    Bytes& Int(int value)
    {
        const auto bits = static_cast<unsigned int>(value);
        for (int shift = 0; shift < 32; shift += 8)
            data.push_back(static_cast<unsigned char>(bits >> shift));
        return *this;
    }
    Bytes& Str(std::u16string_view text)
    {
        Int(static_cast<int>(text.size()));
        for (char16_t unit : text) {
            data.push_back(static_cast<unsigned char>(unit & 0xFF));
            data.push_back(static_cast<unsigned char>(unit >> 8));
        }
        return *this;
    }
};

std::vector<unsigned char> SavedBytes(const VtSymbolGroup& group, unsigned int version, int legacyValue)
{
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    group.Save(stream, version, legacyValue);
    return {stream.GetData(), stream.GetData() + stream.GetLength()};
}

// Loads `bytes` into `group`; returns whether the stream ended up failed.
bool LoadFailed(VtSymbolGroup& group, const std::vector<unsigned char>& bytes, unsigned int version,
                size_t length = SIZE_MAX)
{
    VtMemoryStream stream;
    stream.Open(bytes.data(), static_cast<long long>(std::min(length, bytes.size())));
    group.Load(stream, version);
    return stream.IsFailed();
}

// Every child is a real group whose parent is the group holding it.
void ExpectWellLinked(VtSymbolGroup* group, VTC::VtSymbolLib* lib)
{
    EXPECT_EQ(group->GetAttachedLib(), lib);
    for (int i = 0; i < group->GetChildGroupCount(); ++i) {
        VtSymbolGroup* child = group->GetChildGroup(i);
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(child->GetParentGroup(), group);
        ExpectWellLinked(child, lib);
    }
}

class GroupTest : public ::testing::Test {
protected:
    void SetUp() override { TakeLog(); }

    // Registers a symbol that belongs to no group yet.
    int Unfiled(int id)
    {
        lib.InsertAt(-1, new TestSymbol(id, u"s" + ZedaUnicodeString(std::u16string(1, u'0' + id % 10))));
        return id;
    }

    TestLibrary lib;
    VtSymbolGroup* root = lib.GetRootGroup();
};

// ---- Membership of IDs across the tree ----

TEST_F(GroupTest, AddItemKeepsEachIdInOneGroup)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = a->CreateChildGroup(u"B");
    Unfiled(7);
    Unfiled(8);
    TakeLog();

    EXPECT_TRUE(b->AddItem(7));
    EXPECT_EQ(TakeLog(), Repeat(G("EDd003"), 3));  // root, A and B searched
    EXPECT_EQ(Items(b), (std::vector<int>{7}));

    EXPECT_FALSE(a->AddItem(7, 0));
    EXPECT_EQ(TakeLog(), Repeat(G("EDd003"), 2) + Log{G("EGa037")});

    EXPECT_FALSE(a->AddItem(99));
    EXPECT_EQ(TakeLog(), (Log{L("EGa038"), G("EGa038")}));

    // Moving takes the ID out of every group first, the receiving one included.
    EXPECT_TRUE(a->AddItem(8));
    EXPECT_TRUE(a->AddItem(7, 1));
    EXPECT_TRUE(Items(b).empty());
    EXPECT_EQ(Items(a), (std::vector<int>{8, 7}));
    EXPECT_TRUE(a->AddItem(8, 1));
    EXPECT_EQ(Items(a), (std::vector<int>{7, 8}));
    VtSymbolGroup* sibling = root->CreateChildGroup(u"Sibling");
    EXPECT_TRUE(sibling->AddItem(8, 1));
    EXPECT_EQ(Items(a), (std::vector<int>{7}));
    EXPECT_TRUE(b->AddItem(8, 1));
    EXPECT_TRUE(Items(sibling).empty());
    EXPECT_EQ(Items(b), (std::vector<int>{8}));
    EXPECT_TRUE(b->MoveItemTo(8, sibling));

    EXPECT_EQ(root->FindChildGroupWithID(8), sibling);
    EXPECT_TRUE(root->IsExistID(7));
    EXPECT_FALSE(b->IsExistID(7));
    TakeLog();
    EXPECT_EQ(root->FindChildGroupWithID(99), nullptr);
    // Each group logs as its own search ends: root, A, B, then Sibling.
    EXPECT_EQ(TakeLog(), (Log{G("EDd003"), G("EDd003"), G("EDd003"), G("EGa041"), G("EGa041"), G("EDd003"),
                              G("EGa041"), G("EGa041")}));
}

TEST_F(GroupTest, RemoveItemOnlyInGroupLeavesTheLibrary)
{
    // Loading checks nothing, so a stream can file an ID twice.
    const auto bytes = Bytes().Str(u"R").Int(1).Str(u"A").Int(0).Int(2).Int(5).Int(6).Int(2).Int(5).Int(5).data;
    VtMemoryStream stream;
    stream.Open(bytes.data(), static_cast<long long>(bytes.size()));
    VtSymbolGroup loaded(&lib);
    loaded.Load(stream, 0);
    ASSERT_FALSE(stream.IsFailed());
    Unfiled(5);
    TakeLog();

    loaded.RemoveItemOnlyInGroup(5);
    EXPECT_EQ(Items(&loaded), (std::vector<int>{5}));
    EXPECT_EQ(Items(loaded.GetChildGroup(0)), (std::vector<int>{6}));
    EXPECT_TRUE(lib.IsIDExisted(5));
    loaded.RemoveItemOnlyInGroup(5);
    EXPECT_TRUE(Items(&loaded).empty());
    EXPECT_EQ(TakeLog(), (Log{G("EDd003")}));  // only A, on the second call
}

TEST_F(GroupTest, MoveItemToKeepsMembership)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = root->CreateChildGroup(u"B");
    const int first = lib.Add(1, u"one", a);
    const int second = lib.Add(2, u"two", a);
    const int third = lib.Add(3, u"three", a);
    TakeLog();

    EXPECT_FALSE(a->MoveItemTo(first, a));
    EXPECT_EQ(TakeLog(), (Log{G("EGa036")}));
    EXPECT_FALSE(b->MoveItemTo(first, a));
    EXPECT_EQ(TakeLog(), (Log{G("EDd003"), G("EGa042")}));

    EXPECT_TRUE(a->MoveItemTo(second, b));
    EXPECT_EQ(Items(a), (std::vector<int>{first, third}));
    EXPECT_EQ(Items(b), (std::vector<int>{second}));

    // A symbol the library no longer holds leaves both groups.
    lib.RemoveAt(lib.FindID(third), 1);
    TakeLog();
    EXPECT_TRUE(a->MoveItemTo(third, b));
    EXPECT_EQ(TakeLog(), (Log{L("EGa038"), G("EGa038")}));
    EXPECT_EQ(Items(a), (std::vector<int>{first}));
    EXPECT_EQ(Items(b), (std::vector<int>{second}));
}

TEST_F(GroupTest, MoveItemRunsAndTheirRefusals)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = root->CreateChildGroup(u"B");
    lib.Add(9, u"nine", b);
    for (int id : {1, 2, 3})
        lib.Add(id, u"x", a);
    TakeLog();

    EXPECT_EQ(a->MoveItemTo(3, 1, b), 0);
    EXPECT_EQ(a->MoveItemTo(-1, 1, b), 0);
    EXPECT_EQ(a->MoveItemTo(0, 0, b), 0);
    EXPECT_EQ(a->MoveItemTo(0, 1, a), 0);
    EXPECT_TRUE(TakeLog().empty());

    EXPECT_EQ(a->MoveItemTo(1, 5, b), 2);
    EXPECT_EQ(Items(a), (std::vector<int>{1}));
    EXPECT_EQ(Items(b), (std::vector<int>{9, 2, 3}));
    EXPECT_EQ(a->MoveItemTo(0, INT_MAX, b), 1);
    EXPECT_EQ(Items(b), (std::vector<int>{9, 2, 3, 1}));
}

TEST_F(GroupTest, RemoveSymbolSearchesTheSubtreeAndTheLibraryFollows)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = a->CreateChildGroup(u"B");
    const int deep = lib.Add(5, u"deep", b);
    const int living = TestSymbol::liveCount;
    TakeLog();

    EXPECT_TRUE(root->RemoveSymbol(deep));
    EXPECT_EQ(TakeLog(), (Log{G("EDd003"), G("EDd003")}));
    EXPECT_TRUE(Items(b).empty());
    EXPECT_EQ(lib.GetSymbolCount(), 0);
    EXPECT_EQ(TestSymbol::liveCount, living - 1);

    EXPECT_FALSE(root->RemoveSymbol(42));
    EXPECT_EQ(TakeLog(), Repeat(G("EDd003"), 3) + Repeat(G("EGa022"), 3));

    // An ID the library no longer holds leaves the group although the library refuses.
    const int stale = lib.Add(6, u"stale", a);
    lib.RemoveAt(lib.FindID(stale), 1);
    TakeLog();
    EXPECT_FALSE(root->RemoveSymbol(stale));
    EXPECT_EQ(TakeLog(), (Log{G("EDd003"), L("EGa038"), L("EGa030"), L("EGa022"), G("EGa022")}));
    EXPECT_TRUE(Items(a).empty());
}

TEST_F(GroupTest, RemoveItemRemovesSymbolsOfARun)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    for (int id : {1, 2, 3})
        lib.Add(id, u"x", a);
    TakeLog();

    EXPECT_EQ(a->RemoveItem(3, 1), 0);
    EXPECT_TRUE(TakeLog().empty());
    EXPECT_EQ(a->RemoveItem(4, 1), 0);
    EXPECT_EQ(a->RemoveItem(0, 0), 0);
    EXPECT_EQ(a->RemoveItem(-1, 1), 0);
    EXPECT_EQ(TakeLog(), Repeat(G("EGa021"), 3));
    EXPECT_EQ(lib.GetSymbolCount(), 3);

    EXPECT_EQ(a->RemoveItem(1, INT_MAX), 2);
    EXPECT_EQ(Items(a), (std::vector<int>{1}));
    EXPECT_EQ(lib.IdList(), (std::vector<int>{1}));
    EXPECT_EQ(a->RemoveItem(0, 100), 1);
    EXPECT_EQ(lib.GetSymbolCount(), 0);
    TakeLog();
    EXPECT_EQ(a->RemoveItem(0, 0), 0);
    EXPECT_EQ(TakeLog(), (Log{G("EGa021")}));
}

TEST_F(GroupTest, SetItemIdRenumbersInTheLibraryToo)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    lib.Add(3, u"three", a);
    lib.Add(4, u"four", a);
    TakeLog();

    EXPECT_TRUE(a->SetItemID(0, 30));
    EXPECT_EQ(TakeLog(), (Log{L("EGa038")}));  // the library's probe for a free ID
    EXPECT_EQ(Items(a), (std::vector<int>{30, 4}));
    EXPECT_EQ(lib.IdList(), (std::vector<int>{30, 4}));
    ASSERT_NE(lib.GetSymbolByID(30), nullptr);
    EXPECT_EQ(lib.GetSymbolByID(30)->ID, 30);
    EXPECT_EQ(a->GetItemName(0), ZedaUnicodeString(u"three"));
    EXPECT_FALSE(lib.IsIDExisted(3));
    TakeLog();

    EXPECT_TRUE(a->SetItemID(0, 30));
    EXPECT_EQ(TakeLog(), (Log{G("EEe010")}));

    EXPECT_FALSE(a->SetItemID(0, 4));
    EXPECT_EQ(TakeLog(), (Log{L("EGa048"), G("EGa047")}));
    EXPECT_EQ(Items(a), (std::vector<int>{30, 4}));

    EXPECT_FALSE(a->SetItemID(2, 50));
    EXPECT_FALSE(a->SetItemID(-1, 50));
    EXPECT_EQ(TakeLog(), (Log{G("EDb001"), G("EGa047"), G("EDb001"), G("EGa047")}));

    // An item whose symbol the library lost is refused, not thrown on.
    lib.RemoveAt(lib.FindID(4), 1);
    TakeLog();
    EXPECT_FALSE(a->SetItemID(1, 50));
    EXPECT_EQ(TakeLog(), (Log{L("EGa038"), G("EGa047")}));
    EXPECT_EQ(a->GetItemID(1), 4);

    a->SetItemName(0, u"renamed");
    EXPECT_EQ(lib.GetSymbolByID(30)->name, ZedaUnicodeString(u"renamed"));
}

TEST_F(GroupTest, CheckedAccessSortAndStub)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    for (int id : {5, 1, 3})
        lib.Add(id, u"x", a);
    a->SortByID();
    EXPECT_EQ(Items(a), (std::vector<int>{1, 3, 5}));
    TakeLog();

    EXPECT_THROW(root->GetChildGroup(root->GetChildGroupCount()), std::out_of_range);
    EXPECT_THROW(root->GetChildGroup(-1), std::out_of_range);
    EXPECT_THROW(a->GetItemID(3), std::out_of_range);
    EXPECT_THROW(a->GetItemID(-1), std::out_of_range);
    EXPECT_FALSE(root->AppendGroup(nullptr));
    EXPECT_FALSE(root->AppendGroup(a));
    EXPECT_EQ(root->GetChildGroupCount(), 1);
    EXPECT_TRUE(TakeLog().empty());
}

// ---- The tree ----

TEST_F(GroupTest, CreateAndFindChildGroups)
{
    EXPECT_EQ(root->GetGroupName(), ZedaUnicodeString(u"RootGroup"));
    EXPECT_EQ(root->GetParentGroup(), nullptr);
    lib.SetModifiedFlag(0);

    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->GetParentGroup(), root);
    EXPECT_EQ(a->GetAttachedLib(), &lib);
    EXPECT_TRUE(lib.IsModified());
    EXPECT_FALSE(a->IsModified());
    EXPECT_FALSE(root->IsModified());
    lib.SetModifiedFlag(0);
    TakeLog();

    EXPECT_EQ(root->CreateChildGroup(u"A"), nullptr);
    EXPECT_EQ(TakeLog(), (Log{G("EGa046"), G("EGa045")}));
    EXPECT_FALSE(lib.IsModified());
    EXPECT_EQ(root->GetChildGroupCount(), 1);
    EXPECT_NE(root->CreateChildGroup(u"a"), nullptr);  // names are case-sensitive

    // root [A [C], a, B [A, D]]
    VtSymbolGroup* c = a->CreateChildGroup(u"C");
    VtSymbolGroup* b = root->CreateChildGroup(u"B");
    VtSymbolGroup* deepA = b->CreateChildGroup(u"A");
    VtSymbolGroup* d = b->CreateChildGroup(u"D");
    TakeLog();
    EXPECT_EQ(root->FindChildGroup(u"A"), a);
    EXPECT_EQ(b->FindChildGroup(u"A"), deepA);
    EXPECT_EQ(root->FindChildGroup(u"C"), c);
    EXPECT_EQ(root->FindChildGroup(u"RootGroup"), root);
    EXPECT_TRUE(TakeLog().empty());
    // Every subtree searched in full before the hit logs once per group: C, A, a, and B's A.
    EXPECT_EQ(root->FindChildGroup(u"D"), d);
    EXPECT_EQ(TakeLog(), Repeat(G("EGa044"), 4));

    EXPECT_EQ(root->FindChildGroup(u"Z"), nullptr);
    EXPECT_EQ(TakeLog(), Repeat(G("EGa044"), 7));
    EXPECT_EQ(root->GetChildGroup(u"a")->GetGroupName(), ZedaUnicodeString(u"a"));
    EXPECT_EQ(root->GetChildGroup(u"C"), nullptr);  // direct children only
    EXPECT_EQ(TakeLog(), (Log{G("EGa043")}));

    VtSymbolGroup loose;
    VtSymbolGroup* looseChild = loose.CreateChildGroup(u"A");
    ASSERT_NE(looseChild, nullptr);
    EXPECT_EQ(looseChild->GetAttachedLib(), nullptr);
    EXPECT_EQ(looseChild->GetParentGroup(), &loose);
}

TEST_F(GroupTest, AvailableNamesKeepTheirSuffixRule)
{
    const auto available = [this](const char16_t* name) { return root->GetAvailableName(name).Str(); };
    EXPECT_EQ(available(u"Roads"), u"Roads");
    root->CreateChildGroup(u"Roads");
    EXPECT_EQ(available(u"Roads"), u"Roads_1");
    root->CreateChildGroup(u"Roads_1");
    EXPECT_EQ(available(u"Roads"), u"Roads_2");
    root->CreateChildGroup(u"Roads_2");
    EXPECT_EQ(available(u"Roads"), u"Roads_3");

    root->CreateChildGroup(u"my_group");
    root->CreateChildGroup(u"my_group_1");
    EXPECT_EQ(available(u"my_group"), u"my_2");

    root->CreateChildGroup(u"_x");
    root->CreateChildGroup(u"_x_1");
    EXPECT_EQ(available(u"_x"), u"_x_2");  // never cut at position 0
    root->CreateChildGroup(u"_");
    root->CreateChildGroup(u"__1");
    EXPECT_EQ(available(u"_"), u"__2");

    // Only direct children count.
    root->GetChildGroup(u"Roads")->CreateChildGroup(u"Deep");
    EXPECT_EQ(available(u"Deep"), u"Deep");
    EXPECT_TRUE(TakeLog().empty());
}

TEST_F(GroupTest, RemoveChildRemovesEveryOtherGrandchildWithItsSymbols)
{
    root->CreateChildGroup(u"Before");
    VtSymbolGroup* child = root->CreateChildGroup(u"Child");
    std::vector<int> grandchildSymbols;
    for (int i = 0; i < 5; ++i) {
        VtSymbolGroup* grandchild = child->CreateChildGroup(u"g" + ZedaUnicodeString(std::u16string(1, u'0' + i)));
        if (i != 2)  // g2 stays empty, so its own removal logs
            grandchildSymbols.push_back(lib.Add(10 + i, u"g", grandchild));
    }
    const int own = lib.Add(20, u"own", child);
    const int kept = lib.Add(30, u"kept", root);
    TakeLog();

    EXPECT_FALSE(root->RemoveChild(2, 0));
    EXPECT_FALSE(root->RemoveChild(-1, 0));
    EXPECT_EQ(TakeLog(), Repeat(G("EDb009"), 2));

    EXPECT_TRUE(root->RemoveChild(1, 0));
    EXPECT_EQ(TakeLog(), (Log{G("EGa021"), G("EDb009"), G("EDb009")}));
    EXPECT_EQ(ChildNames(root), (std::vector<std::u16string>{u"Before"}));
    // g0 and g4 took their symbols with them; g1 and g3 went with the child
    // and left theirs registered but in no group.
    EXPECT_EQ(lib.IdList(), (std::vector<int>{11, 13, kept}));
    EXPECT_FALSE(lib.IsIDExisted(own));
    TakeLog();
    EXPECT_EQ(root->FindChildGroupWithID(11), nullptr);
    EXPECT_EQ(root->FindChildGroupWithID(kept), root);
}

TEST_F(GroupTest, RemoveChildKeepingContentsLiftsGrandchildren)
{
    root->CreateChildGroup(u"Roads");
    VtSymbolGroup* europe = root->CreateChildGroup(u"Europe");
    root->CreateChildGroup(u"Lakes");
    VtSymbolGroup* roads = europe->CreateChildGroup(u"Roads");
    europe->CreateChildGroup(u"Rivers");
    europe->CreateChildGroup(u"Europe");
    const int inRoads = lib.Add(1, u"road", roads);
    const int rootItem = lib.Add(2, u"root", root);
    const int first = lib.Add(7, u"seven", europe);
    const int second = lib.Add(8, u"eight", europe);
    const int symbols = lib.GetSymbolCount();
    TakeLog();

    EXPECT_TRUE(root->RemoveChild(1, 1));
    EXPECT_EQ(ChildNames(root),
              (std::vector<std::u16string>{u"Roads", u"Lakes", u"RoadsEurope", u"Rivers", u"Europe"}));
    for (int i = 0; i < root->GetChildGroupCount(); ++i)
        EXPECT_EQ(root->GetChildGroup(i)->GetParentGroup(), root);
    EXPECT_EQ(root->GetChildGroup(2), roads);
    EXPECT_EQ(Items(roads), (std::vector<int>{inRoads}));
    EXPECT_EQ(Items(root), (std::vector<int>{rootItem, first, second}));
    EXPECT_EQ(lib.GetSymbolCount(), symbols);
    // Each re-filed ID is first looked for in every group of the tree: the
    // root and its six children, the dissolving one still among them.
    EXPECT_EQ(TakeLog(), Repeat(G("EDd003"), 14));
}

TEST_F(GroupTest, MoveChildToRefusesCyclesAndKeepsTheSelfTargetQuirk)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = root->CreateChildGroup(u"B");
    VtSymbolGroup* below = a->CreateChildGroup(u"Below");
    VtSymbolGroup* deeper = below->CreateChildGroup(u"Deeper");
    TakeLog();

    EXPECT_FALSE(root->MoveChildTo(0, root));
    EXPECT_FALSE(root->MoveChildTo(0, below));
    EXPECT_FALSE(root->MoveChildTo(0, deeper));
    EXPECT_FALSE(root->MoveChildTo(-1, b));
    EXPECT_FALSE(root->MoveChildTo(2, b));
    EXPECT_FALSE(root->MoveChildTo(0, nullptr));
    EXPECT_TRUE(TakeLog().empty());

    EXPECT_TRUE(root->MoveChildTo(0, b));
    EXPECT_EQ(ChildNames(root), (std::vector<std::u16string>{u"B"}));
    EXPECT_EQ(b->GetChildGroup(0), a);
    EXPECT_EQ(a->GetParentGroup(), b);
    EXPECT_EQ(a->GetChildGroup(0), below);

    // No name check: B may now hold two children named A.
    b->CreateChildGroup(u"X")->CreateChildGroup(u"A");
    EXPECT_TRUE(b->GetChildGroup(1)->MoveChildTo(0, b));
    EXPECT_EQ(ChildNames(b), (std::vector<std::u16string>{u"A", u"X", u"A"}));

    // Moving a child under itself detaches it as its own parent and child.
    EXPECT_TRUE(b->MoveChildTo(0, a));
    EXPECT_EQ(ChildNames(b), (std::vector<std::u16string>{u"X", u"A"}));
    EXPECT_EQ(a->GetParentGroup(), a);
    EXPECT_EQ(a->GetChildGroup(a->GetChildGroupCount() - 1), a);
    // Re-attach it so that the tree owns it again.
    EXPECT_TRUE(a->MoveChildTo(a->GetChildGroupCount() - 1, root));
    EXPECT_EQ(a->GetParentGroup(), root);
    EXPECT_EQ(ChildNames(a), (std::vector<std::u16string>{u"Below"}));
}

TEST_F(GroupTest, ClearDropsIdsAndSubtreeButNotSymbols)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    a->CreateChildGroup(u"B");
    lib.Add(1, u"one", a);
    a->SetModifiedFlag(1);
    a->Clear();
    EXPECT_EQ(a->GetItemCount(), 0);
    EXPECT_EQ(a->GetChildGroupCount(), 0);
    EXPECT_EQ(a->GetGroupName(), ZedaUnicodeString(u"A"));
    EXPECT_EQ(a->GetParentGroup(), root);
    EXPECT_TRUE(a->IsModified());
    EXPECT_TRUE(lib.IsIDExisted(1));
}

// ---- The group record ----

class GroupRecordTest : public GroupTest {
protected:
    // root {1, 2} with North {3} and South {East {4}}.
    void BuildSampleTree()
    {
        VtSymbolGroup* north = root->CreateChildGroup(u"North");
        VtSymbolGroup* south = root->CreateChildGroup(u"South");
        VtSymbolGroup* east = south->CreateChildGroup(u"East");
        lib.Add(1, u"a", root);
        lib.Add(2, u"b", root);
        lib.Add(3, u"c", north);
        lib.Add(4, u"d", east);
        TakeLog();
    }

    static std::vector<unsigned char> SampleBytes(bool legacy, int legacyValue)
    {
        Bytes b;
        const auto legacyField = [&](int value) {
            if (legacy)
                b.Int(value);
        };
        b.Str(u"RootGroup");
        legacyField(legacyValue);
        b.Int(2).Str(u"North");
        legacyField(0);
        b.Int(0).Int(1).Int(3).Str(u"South");
        legacyField(0);
        b.Int(1).Str(u"East");
        legacyField(0);
        b.Int(0).Int(1).Int(4).Int(0).Int(2).Int(1).Int(2);
        return b.data;
    }
};

TEST_F(GroupRecordTest, EmptyRootBytesByVersion)
{
    const auto expected = [](bool legacy) {
        Bytes b;
        b.Str(u"RootGroup");
        if (legacy)
            b.Int(5);
        b.Int(0).Int(0);
        return b.data;
    };
    EXPECT_EQ(SavedBytes(*root, 20050302, 5), expected(true));
    EXPECT_EQ(SavedBytes(*root, 1, 5), expected(true));
    EXPECT_EQ(SavedBytes(*root, 20050303, 5), expected(false));
    EXPECT_EQ(SavedBytes(*root, 0, 5), expected(false));
    EXPECT_EQ(SavedBytes(*root, 20120328, 5), expected(false));
}

TEST_F(GroupRecordTest, TreeBytesAndRoundTrip)
{
    BuildSampleTree();
    EXPECT_EQ(SavedBytes(*root, 20050302, -7), SampleBytes(true, -7));
    EXPECT_EQ(SavedBytes(*root, 20120328, -7), SampleBytes(false, 0));

    for (const auto& [version, legacy] : {std::pair{20050302u, true}, std::pair{20120328u, false}}) {
        VtSymbolGroup loaded(&lib);
        EXPECT_FALSE(LoadFailed(loaded, SampleBytes(legacy, 99), version));
        EXPECT_EQ(loaded.GetGroupName(), ZedaUnicodeString(u"RootGroup"));
        EXPECT_EQ(ChildNames(&loaded), (std::vector<std::u16string>{u"North", u"South"}));
        EXPECT_EQ(ChildNames(loaded.GetChildGroup(1)), (std::vector<std::u16string>{u"East"}));
        EXPECT_EQ(Items(&loaded), (std::vector<int>{1, 2}));
        EXPECT_EQ(Items(loaded.GetChildGroup(1)->GetChildGroup(0)), (std::vector<int>{4}));
        ExpectWellLinked(&loaded, &lib);
        EXPECT_EQ(SavedBytes(loaded, version, 0), SavedBytes(*root, version, 0));
    }
    EXPECT_TRUE(TakeLog().empty());
}

TEST_F(GroupRecordTest, LibraryRoundTripThroughItsStream)
{
    BuildSampleTree();
    VtMemoryStream out;
    out.Open(VTC::VT_STREAM_WRITE);
    ASSERT_TRUE(lib.SaveToStream(out, 20050302, 1));

    TestLibrary copy;
    VtMemoryStream in;
    in.Open(out.GetData(), out.GetLength());
    ASSERT_TRUE(copy.LoadFromStream(in, 1));
    EXPECT_EQ(copy.GetVersion(), 20050302u);
    EXPECT_EQ(copy.IdList(), lib.IdList());
    EXPECT_EQ(SavedBytes(*copy.GetRootGroup(), 0, 0), SavedBytes(*root, 0, 0));
    ExpectWellLinked(copy.GetRootGroup(), &copy);
    VtSymbolGroup* east = copy.GetRootGroup()->FindChildGroup(u"East");
    ASSERT_NE(east, nullptr);
    EXPECT_EQ(east->GetItemName(0), ZedaUnicodeString(u"d"));
}

TEST_F(GroupRecordTest, NegativeCountsReadAsNone)
{
    VtSymbolGroup* kept = root->CreateChildGroup(u"Kept");
    lib.Add(9, u"nine", root);
    const auto bytes = Bytes().Str(u"New").Int(-3).Int(-1).data;
    EXPECT_FALSE(LoadFailed(*root, bytes, 0));
    EXPECT_EQ(root->GetGroupName(), ZedaUnicodeString(u"New"));
    EXPECT_EQ(ChildNames(root), (std::vector<std::u16string>{u"Kept"}));
    EXPECT_EQ(root->GetChildGroup(0), kept);
    EXPECT_EQ(Items(root), (std::vector<int>{9}));

    // A count of zero leaves the items too; a positive one replaces them.
    EXPECT_FALSE(LoadFailed(*root, Bytes().Str(u"R").Int(0).Int(0).data, 0));
    EXPECT_EQ(Items(root), (std::vector<int>{9}));
    EXPECT_FALSE(LoadFailed(*root, Bytes().Str(u"R").Int(-3).Int(2).Int(5).Int(6).data, 0));
    EXPECT_EQ(Items(root), (std::vector<int>{5, 6}));
    EXPECT_EQ(root->GetChildGroup(0), kept);
}

TEST_F(GroupRecordTest, TruncatedStreamsKeepOnlyWhatWasReadInFull)
{
    BuildSampleTree();
    for (const unsigned int version : {20050302u, 0u}) {
        const auto full = SavedBytes(*root, version, 3);
        for (size_t cut = 0; cut < full.size(); ++cut) {
            SCOPED_TRACE(testing::Message() << "version " << version << ", cut at " << cut);
            VtSymbolGroup loaded(&lib);
            EXPECT_TRUE(LoadFailed(loaded, full, version, cut));
            ExpectWellLinked(&loaded, &lib);
            ASSERT_LE(loaded.GetChildGroupCount(), root->GetChildGroupCount());
            for (int i = 0; i < loaded.GetChildGroupCount(); ++i)
                EXPECT_EQ(SavedBytes(*loaded.GetChildGroup(i), version, 0), SavedBytes(*root->GetChildGroup(i), version, 0));
            const std::vector<int> items = Items(&loaded);
            const std::vector<int> original = Items(root);
            EXPECT_TRUE(std::equal(items.begin(), items.end(), original.begin(),
                                   original.begin() + std::min(items.size(), original.size())));
            EXPECT_LE(items.size(), original.size());
        }
    }
}

TEST_F(GroupRecordTest, NonsenseCountsFailTheStreamWithoutAllocating)
{
    const auto expectFailedAndEmpty = [this](const std::vector<unsigned char>& bytes) {
        VtSymbolGroup loaded(&lib);
        EXPECT_TRUE(LoadFailed(loaded, bytes, 0));
        EXPECT_EQ(loaded.GetChildGroupCount(), 0);
        EXPECT_EQ(loaded.GetItemCount(), 0);
    };
    expectFailedAndEmpty(Bytes().Str(u"R").Int(INT_MAX).data);
    expectFailedAndEmpty(Bytes().Str(u"R").Int(0).Int(INT_MAX).Int(1).data);
    // Two child records need 24 bytes at least; twelve are left.
    expectFailedAndEmpty(Bytes().Str(u"R").Int(2).Str(u"").Int(0).Int(0).data);
    expectFailedAndEmpty(Bytes().Str(u"R").Int(0).Int(3).Int(1).Int(2).data);

    // The child read in full is kept, the one cut short is not.
    VtSymbolGroup loaded(&lib);
    EXPECT_TRUE(LoadFailed(loaded, Bytes().Str(u"R").Int(2).Str(u"A").Int(0).Int(1).Int(7).Str(u"B").Int(1).Int(0).Int(0).data, 0));
    EXPECT_EQ(ChildNames(&loaded), (std::vector<std::u16string>{u"A"}));
    EXPECT_EQ(Items(loaded.GetChildGroup(0)), (std::vector<int>{7}));
}

TEST_F(GroupRecordTest, NestingDepthIsBounded)
{
    const auto chain = [](int depth) {
        Bytes b;
        for (int i = 0; i < depth; ++i)
            b.Str(u"").Int(1);
        b.Str(u"").Int(0).Int(0);
        for (int i = 0; i < depth; ++i)
            b.Int(0);
        return b.data;
    };
    VtSymbolGroup deepest(&lib);
    EXPECT_FALSE(LoadFailed(deepest, chain(1000), 0));
    int depth = 0;
    for (VtSymbolGroup* g = &deepest; g->GetChildGroupCount() > 0; g = g->GetChildGroup(0))
        ++depth;
    EXPECT_EQ(depth, 1000);
    EXPECT_EQ(SavedBytes(deepest, 0, 0), chain(1000));

    VtSymbolGroup tooDeep(&lib);
    EXPECT_TRUE(LoadFailed(tooDeep, chain(1001), 0));
    EXPECT_EQ(tooDeep.GetChildGroupCount(), 0);
}

}  // namespace
