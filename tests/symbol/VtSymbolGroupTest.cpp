// The group tree: membership of IDs across the tree, the structural edits
// with their deliberate quirks, and the group record on a stream.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <stdexcept>
#include <tuple>

#include "TestLibrary.h"

namespace {

using lqtest::Codes;
using lqtest::TestLibrary;
using lqtest::TestSymbol;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

// The subtree as text: each name, its items in parentheses, its children in
// brackets. Every child must be linked to its parent and to its library.
std::string Tree(VtSymbolGroup* group)
{
    std::string text = group->GetGroupName().ToUtf8();
    const int items = group->GetItemCount();
    const int children = group->GetChildGroupCount();
    for (int i = 0; i < items; ++i)
        text += (i == 0 ? "(" : " ") + std::to_string(group->GetItemID(i)) + (i + 1 < items ? "" : ")");
    for (int i = 0; i < children; ++i) {
        VtSymbolGroup* child = group->GetChildGroup(i);
        const bool linked = child && child->GetParentGroup() == group && child->GetAttachedLib() == group->GetAttachedLib();
        EXPECT_TRUE(linked) << "child " << i << " of " << text;
        text += (i == 0 ? "[" : " ") + (linked ? Tree(child) : "?") + (i + 1 < children ? "" : "]");
    }
    return text;
}

// The subtree in pre-order, walked without recursion.
std::vector<VtSymbolGroup*> PreOrder(VtSymbolGroup* top)
{
    std::vector<VtSymbolGroup*> order;
    std::vector<VtSymbolGroup*> pending{top};
    while (!pending.empty()) {
        VtSymbolGroup* group = pending.back();
        pending.pop_back();
        order.push_back(group);
        for (int i = group->GetChildGroupCount(); i > 0; --i)
            pending.push_back(group->GetChildGroup(i - 1));
    }
    return order;
}

// Little-endian bytes built by hand, as the stream should write them.
struct Bytes {
    std::vector<unsigned char> data;
    bool legacy = false;  // records carry a legacy value (versions 1 .. 20050302)

    Bytes& Int(int value)
    {
        for (int shift = 0; shift < 32; shift += 8)
            data.push_back(static_cast<unsigned char>(static_cast<unsigned int>(value) >> shift));
        return *this;
    }
    Bytes& Str(std::u16string_view text)
    {
        Int(static_cast<int>(text.size()));
        for (char16_t unit : text)
            Int(unit).data.resize(data.size() - 2);
        return *this;
    }
    // A record's name, then its legacy value where the version has one.
    Bytes& Group(std::u16string_view name, int legacyValue = 0)
    {
        Str(name);
        return legacy ? Int(legacyValue) : *this;
    }
};

std::vector<unsigned char> SavedBytes(const VtSymbolGroup& group, unsigned int version, int legacyValue)
{
    VTC::VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    group.Save(stream, version, legacyValue);
    return {stream.GetData(), stream.GetData() + stream.GetLength()};
}

// Loads the first `length` of `bytes` into `group`; returns whether the stream ended up failed.
bool LoadFailed(VtSymbolGroup& group, const std::vector<unsigned char>& bytes, unsigned int version,
                size_t length = SIZE_MAX)
{
    VTC::VtMemoryStream stream;
    stream.Open(bytes.data(), static_cast<long long>(std::min(length, bytes.size())));
    group.Load(stream, version);
    return stream.IsFailed();
}

class GroupTest : public ::testing::Test {
protected:
    // Files each ID into `group` as a new symbol.
    void File(VtSymbolGroup* group, std::initializer_list<int> ids)
    {
        for (int id : ids)
            lib.Add(id, u"x", group);
    }

    TestLibrary lib;
    VtSymbolGroup* root = lib.GetRootGroup();
};

// ---- Membership of IDs across the tree ----

TEST_F(GroupTest, EachIdStaysInOneGroup)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = a->CreateChildGroup(u"B");
    VtSymbolGroup* c = root->CreateChildGroup(u"C");
    for (int id : {7, 8})
        lib.InsertAt(-1, new TestSymbol(id, u"unfiled"));
    EXPECT_LOGS(EXPECT_TRUE(b->AddItem(7)), Codes(4, "group:EDd003"));  // root, A, B and C searched
    EXPECT_LOGS(EXPECT_FALSE(c->AddItem(7, 0)), "group:EDd003", "group:EDd003", "group:EGa037");
    EXPECT_LOGS(EXPECT_FALSE(a->AddItem(99)), "lib:EGa038", "group:EGa038");
    // Moving takes the ID out of every group first, the receiving one included.
    EXPECT_TRUE(a->AddItem(8) && a->AddItem(7, 1));
    EXPECT_EQ(Tree(root), "RootGroup[A(8 7)[B] C]");
    EXPECT_TRUE(a->AddItem(8, 1));
    EXPECT_EQ(Tree(root), "RootGroup[A(7 8)[B] C]");
    EXPECT_TRUE(c->AddItem(7, 1));
    EXPECT_EQ(root->FindChildGroupWithID(7), c);
    // Each group logs as its own search ends: root, A, B, then C.
    EXPECT_LOGS(EXPECT_EQ(root->FindChildGroupWithID(99), nullptr), "group:EDd003", "group:EDd003", "group:EDd003",
                "group:EGa041", "group:EGa041", "group:EDd003", "group:EGa041", "group:EGa041");

    File(c, {3, 2, 1});
    EXPECT_LOGS(EXPECT_FALSE(c->MoveItemTo(1, c)), "group:EGa036");
    EXPECT_LOGS(EXPECT_FALSE(b->MoveItemTo(1, c)), "group:EDd003", "group:EGa042");
    for (const auto& [index, count, target] : {std::tuple{4, 1, b}, {-1, 1, b}, {0, 0, b}, {0, 1, c}})
        EXPECT_LOGS(EXPECT_EQ(c->MoveItemTo(index, count, target), 0));
    EXPECT_TRUE(c->MoveItemTo(3, b));
    EXPECT_EQ(c->MoveItemTo(1, INT_MAX, b), 2);
    // A symbol the library no longer holds leaves both groups.
    lib.RemoveAt(lib.FindID(7), 1);
    EXPECT_LOGS(EXPECT_TRUE(c->MoveItemTo(7, b)), "lib:EGa038", "group:EGa038");
    EXPECT_EQ(Tree(root), "RootGroup[A(8)[B(3 2 1)] C]");
    b->SortByID();
    EXPECT_EQ(Tree(b), "B(1 2 3)");
}

TEST_F(GroupTest, RemovingAndRenumberingReachTheLibrary)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    File(a, {1, 2, 3, 4});
    File(a->CreateChildGroup(u"B"), {5});
    EXPECT_LOGS(EXPECT_EQ(a->RemoveItem(4, 1), 0));
    for (const auto& [index, count] : {std::pair{5, 1}, {0, 0}, {-1, 1}})
        EXPECT_LOGS(EXPECT_EQ(a->RemoveItem(index, count), 0), "group:EGa021");
    EXPECT_EQ(a->RemoveItem(2, INT_MAX), 2);
    EXPECT_LOGS(EXPECT_TRUE(root->RemoveSymbol(5)), "group:EDd003", "group:EDd003");
    EXPECT_LOGS(EXPECT_FALSE(root->RemoveSymbol(42)), "group:EDd003", "group:EDd003", "group:EDd003", "group:EGa022",
                "group:EGa022", "group:EGa022");

    EXPECT_LOGS(EXPECT_TRUE(a->SetItemID(1, 30)), "lib:EGa038");  // the library's probe for a free ID
    EXPECT_EQ(lib.IdList(), (std::vector<int>{1, 30}));
    EXPECT_LOGS(EXPECT_TRUE(a->SetItemID(1, 30)), "group:EEe010");
    EXPECT_LOGS(EXPECT_FALSE(a->SetItemID(1, 1)), "lib:EGa048", "group:EGa047");
    for (const int index : {2, -1})
        EXPECT_LOGS(EXPECT_FALSE(a->SetItemID(index, 50)), "group:EDb001", "group:EGa047");
    // IDs the library lost: renumbering goes to the library's position -1, where a
    // used new ID is refused and a free one fails the bounded read; removal takes
    // the item although the library refuses.
    lib.RemoveAt(0, 2);
    File(root, {60});
    EXPECT_LOGS(EXPECT_FALSE(a->SetItemID(0, 60)), "lib:EGa038", "lib:EGa048", "group:EGa047");
    EXPECT_LOGS(EXPECT_THROW(a->SetItemID(0, 50), std::out_of_range), "lib:EGa038", "lib:EGa038");
    EXPECT_LOGS(EXPECT_FALSE(root->RemoveSymbol(30)), "group:EDd003", "lib:EGa038", "lib:EGa030", "lib:EGa022",
                "group:EGa022");
    EXPECT_EQ(Tree(root), "RootGroup(60)[A(1)[B]]");
    EXPECT_LOGS(EXPECT_EQ(a->GetChildGroup(0)->RemoveItem(0, 1), 0), "group:EGa021");  // an empty group
}

// ---- The tree ----

TEST_F(GroupTest, CreateAndFindChildGroups)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    lib.SetModifiedFlag(0);
    EXPECT_LOGS(EXPECT_EQ(root->CreateChildGroup(u"A"), nullptr), "group:EGa046", "group:EGa045");
    EXPECT_FALSE(lib.IsModified());
    a->CreateChildGroup(u"C");
    EXPECT_TRUE(lib.IsModified());
    root->CreateChildGroup(u"a");  // names are case-sensitive
    VtSymbolGroup* b = root->CreateChildGroup(u"B");
    b->CreateChildGroup(u"A");
    VtSymbolGroup* d = b->CreateChildGroup(u"D");
    EXPECT_EQ(Tree(root), "RootGroup[A[C] a B[A D]]");
    EXPECT_LOGS(EXPECT_EQ(root->FindChildGroup(u"A"), a));
    EXPECT_LOGS(EXPECT_EQ(root->FindChildGroup(u"RootGroup"), root));
    // Every subtree searched in full before the hit logs once per group: C, A, a, and B's A.
    EXPECT_LOGS(EXPECT_EQ(root->FindChildGroup(u"D"), d), Codes(4, "group:EGa044"));
    EXPECT_LOGS(EXPECT_EQ(root->FindChildGroup(u"Z"), nullptr), Codes(7, "group:EGa044"));
    EXPECT_LOGS(EXPECT_EQ(root->GetChildGroup(u"C"), nullptr), "group:EGa043");  // direct children only
    EXPECT_THROW(root->GetChildGroup(3), std::out_of_range);
}

TEST_F(GroupTest, AvailableNamesKeepTheirSuffixRule)
{
    const std::tuple<std::vector<const char16_t*>, const char16_t*, std::u16string> cases[] = {
        {{}, u"Roads", u"Roads"},
        {{u"Roads"}, u"Roads", u"Roads_1"},
        {{u"Roads", u"Roads_1"}, u"Roads", u"Roads_2"},
        {{u"my_group", u"my_group_1"}, u"my_group", u"my_2"},  // cut at the last "_" on every pass
        {{u"_x", u"_x_1"}, u"_x", u"_x_2"},                    // never cut at position 0
    };
    for (const auto& [children, name, expected] : cases) {
        VtSymbolGroup group(&lib);
        for (const char16_t* child : children)
            group.CreateChildGroup(child);
        EXPECT_EQ(group.GetAvailableName(name).Str(), expected);
    }
    // Only direct children count.
    root->CreateChildGroup(u"Roads")->CreateChildGroup(u"Deep");
    EXPECT_LOGS(EXPECT_EQ(root->GetAvailableName(u"Deep").Str(), u"Deep"));
}

TEST_F(GroupTest, RemoveChildRemovesEveryOtherGrandchildWithItsSymbols)
{
    root->CreateChildGroup(u"Before");
    VtSymbolGroup* child = root->CreateChildGroup(u"Child");
    File(child, {20});
    for (int i = 0; i < 5; ++i) {
        VtSymbolGroup* grandchild = child->CreateChildGroup(ZedaUnicodeString::FromUtf8("g" + std::to_string(i)));
        if (i != 2)  // g2 stays empty, so its own removal logs
            File(grandchild, {10 + i});
    }
    File(root, {30});
    EXPECT_LOGS(EXPECT_FALSE(root->RemoveChild(2, 0)), "group:EDb009");
    EXPECT_LOGS(EXPECT_FALSE(root->RemoveChild(-1, 1)), "group:EDb009");
    EXPECT_LOGS(EXPECT_TRUE(root->RemoveChild(1, 0)), "group:EGa021", "group:EDb009", "group:EDb009");
    // g0 and g4 took their symbols with them; g1 and g3 went with the child
    // and left theirs registered but in no group.
    EXPECT_EQ(Tree(root), "RootGroup(30)[Before]");
    EXPECT_EQ(lib.IdList(), (std::vector<int>{11, 13, 30}));
}

TEST_F(GroupTest, RemoveChildKeepingContentsLiftsGrandchildren)
{
    root->CreateChildGroup(u"Roads");
    VtSymbolGroup* europe = root->CreateChildGroup(u"Europe");
    root->CreateChildGroup(u"Lakes");
    File(europe->CreateChildGroup(u"Roads"), {1});
    europe->CreateChildGroup(u"Rivers");
    europe->CreateChildGroup(u"Europe");
    File(root, {2});
    File(europe, {7, 8});
    // Each re-filed ID is looked for in the root and its six children, the dissolving one still among them.
    EXPECT_LOGS(EXPECT_TRUE(root->RemoveChild(1, 1)), Codes(14, "group:EDd003"));
    EXPECT_EQ(Tree(root), "RootGroup(2 7 8)[Roads Lakes RoadsEurope(1) Rivers Europe]");
    EXPECT_EQ(lib.GetSymbolCount(), 4);
}

TEST_F(GroupTest, MoveChildToRefusesCyclesAndKeepsTheSelfTargetQuirk)
{
    VtSymbolGroup* a = root->CreateChildGroup(u"A");
    VtSymbolGroup* b = root->CreateChildGroup(u"B");
    VtSymbolGroup* below = a->CreateChildGroup(u"Below");
    VtSymbolGroup* deeper = below->CreateChildGroup(u"Deeper");
    for (const auto& [index, target] : {std::pair{0, root}, {0, below}, {0, deeper}, {-1, b}, {2, b}})
        EXPECT_LOGS(EXPECT_FALSE(root->MoveChildTo(index, target)));
    EXPECT_TRUE(root->MoveChildTo(0, b));
    // No name check: B may now hold two children named A.
    b->CreateChildGroup(u"X")->CreateChildGroup(u"A");
    EXPECT_TRUE(b->GetChildGroup(1)->MoveChildTo(0, b));
    EXPECT_EQ(Tree(root), "RootGroup[B[A[Below[Deeper]] X A]]");

    // Moving a child under itself detaches it as its own parent and child.
    EXPECT_TRUE(b->MoveChildTo(0, a));
    EXPECT_EQ(a->GetParentGroup(), a);
    EXPECT_EQ(a->GetChildGroup(1), a);
    // Re-attach it so that the tree owns it again.
    EXPECT_TRUE(a->MoveChildTo(1, root));
    EXPECT_EQ(Tree(root), "RootGroup[B[X A] A[Below[Deeper]]]");
}

// ---- The group record ----

TEST_F(GroupTest, RecordBytesByVersionRoundTripAndTruncation)
{
    for (const auto& [version, legacy] : {std::pair{1u, true}, {20050302u, true}, {20050303u, false}, {0u, false}})
        EXPECT_EQ(SavedBytes(*root, version, 5), (Bytes{{}, legacy}.Group(u"RootGroup", 5).Int(0).Int(0).data)) << version;
    File(root->CreateChildGroup(u"North"), {3});
    File(root->CreateChildGroup(u"South")->CreateChildGroup(u"East"), {4});
    File(root, {1, 2});
    for (const auto& [version, legacy] : {std::pair{20050302u, true}, {20120328u, false}}) {
        SCOPED_TRACE(version);
        const auto record = [legacy](int legacyValue) {
            return Bytes{{}, legacy}.Group(u"RootGroup", legacyValue).Int(2).Group(u"North").Int(0).Int(1).Int(3)
                .Group(u"South").Int(1).Group(u"East").Int(0).Int(1).Int(4).Int(0).Int(2).Int(1).Int(2).data;
        };
        const auto full = SavedBytes(*root, version, -7);
        EXPECT_EQ(full, record(-7));
        VtSymbolGroup loaded(&lib);
        EXPECT_LOGS(EXPECT_FALSE(LoadFailed(loaded, record(99), version)));
        EXPECT_EQ(SavedBytes(loaded, version, -7), full);
        // Cut anywhere, a stream keeps every group whose record began, in its
        // place, with the name if it was read in full and a prefix of its items.
        std::size_t groupsBefore = 0;
        for (size_t cut = 0; cut < full.size(); ++cut) {
            SCOPED_TRACE(cut);
            VtSymbolGroup partial(&lib);
            EXPECT_TRUE(LoadFailed(partial, full, version, cut));
            Tree(&partial);
            const std::vector<VtSymbolGroup*> read = PreOrder(&partial);
            const std::vector<VtSymbolGroup*> written = PreOrder(root);
            ASSERT_LE(read.size(), written.size());
            EXPECT_GE(read.size(), groupsBefore);
            groupsBefore = read.size();
            for (std::size_t i = 0; i < read.size(); ++i) {
                const ZedaUnicodeString name = read[i]->GetGroupName();
                EXPECT_TRUE(name == written[i]->GetGroupName() || (name.IsEmpty() && i + 1 == read.size()));
                ASSERT_LE(read[i]->GetItemCount(), written[i]->GetItemCount());
                for (int j = 0; j < read[i]->GetItemCount(); ++j)
                    EXPECT_EQ(read[i]->GetItemID(j), written[i]->GetItemID(j));
            }
        }
    }
}

// A chain of 100,000 groups: filing, the searches, saving, loading, the
// comparison, removal and destruction all run on a small stack.
TEST_F(GroupTest, TreesOfAnyDepthRoundTripAndGo)
{
    constexpr int depth = 100000;
    VtSymbolGroup* deepest = root;
    for (int i = 0; i < depth; ++i)
        deepest = deepest->CreateChildGroup(ZedaUnicodeString::FromUtf8(std::to_string(i % 7)));
    File(deepest, {7});
    File(root->GetChildGroup(0), {8});
    auto* log = VTC::VtLogFile::GetInstance(false);
    log->ClearRecords();
    EXPECT_EQ(root->FindChildGroupWithID(7), deepest);
    EXPECT_TRUE(root->IsExistID(7));
    EXPECT_EQ(root->FindChildGroup(u"none"), nullptr);
    EXPECT_EQ(log->GetRecordCount(), 100000u);  // the newest: one "EGa044" per group
    EXPECT_EQ(log->GetRecords().back().code, "EGa044");
    log->ClearRecords();

    for (const unsigned int version : {0u, 20050302u}) {
        VTC::VtMemoryStream stream;
        stream.Open(VTC::VT_STREAM_READWRITE);
        root->Save(stream, version, 3);
        stream.SetPosition(0, 0);
        VtSymbolGroup loaded(&lib);
        loaded.Load(stream, version);
        EXPECT_FALSE(stream.IsFailed());
        EXPECT_EQ(stream.GetRemaining(), 0);
        const std::vector<VtSymbolGroup*> read = PreOrder(&loaded);
        const std::vector<VtSymbolGroup*> written = PreOrder(root);
        ASSERT_EQ(read.size(), written.size());
        for (std::size_t i = 0; i < read.size(); ++i) {
            ASSERT_EQ(read[i]->GetGroupName(), written[i]->GetGroupName());
            ASSERT_EQ(read[i]->GetChildGroupCount(), written[i]->GetChildGroupCount());
            ASSERT_EQ(read[i]->GetItemCount(), written[i]->GetItemCount());
            ASSERT_EQ(read[i]->GetParentGroup(), i == 0 ? nullptr : read[i - 1]);
        }
        EXPECT_EQ(read.back()->GetItemID(0), 7);
        loaded.Clear();
        EXPECT_EQ(loaded.GetChildGroupCount(), 0);
    }
    EXPECT_TRUE(root->RemoveSymbol(7));
    log->ClearRecords();
    // Every level removes its only child first, then its items: the top one
    // takes symbol 8, each of the others logs that it has none.
    EXPECT_TRUE(root->RemoveChild(0, 0));
    EXPECT_EQ(log->GetRecordCount(), 99999u);
    EXPECT_EQ(lib.GetSymbolCount(), 0);
    log->ClearRecords();
    // What the library's destructor takes down.
    VtSymbolGroup* again = root;
    for (int i = 0; i < depth; ++i)
        again = again->CreateChildGroup(u"x");
}

TEST_F(GroupTest, CountsAreTakenAsTheyComeAndNonsenseFailsTheStream)
{
    const auto chain = [](int depth) {
        Bytes b;
        for (int i = 0; i < depth; ++i)
            b.Str(u"").Int(1);
        b.Str(u"").Int(0).Int(0).data.resize(b.data.size() + 4 * static_cast<std::size_t>(depth));
        return b.data;
    };
    const std::tuple<std::vector<unsigned char>, bool, std::string> cases[] = {
        {Bytes().Str(u"R").Int(-3).Int(2).Int(5).Int(6).data, false, "R(5 6)"},  // no children, then the items
        {Bytes().Str(u"R").Int(1).Str(u"A").Int(0).Int(2).Int(9).Int(9).Int(1).Int(9).data, false, "R(9)[A(9 9)]"},
        // Counts beyond the stream: what it holds is read, nothing more is made.
        {Bytes().Str(u"R").Int(INT_MAX).data, true, "R"},
        {Bytes().Str(u"R").Int(0).Int(INT_MAX).Int(1).data, true, "R(1)"},
        {Bytes().Str(u"R").Int(2).Str(u"").Int(0).Int(0).data, true, "R[]"},
        {Bytes().Str(u"R").Int(2).Str(u"A").Int(1).Str(u"B").data, true, "R[A[B]]"},
        {Bytes().Str(u"R").Int(0).Int(3).Int(1).Int(2).data, true, "R(1 2)"},
        {chain(1001), false, std::string(1001, '[') + std::string(1001, ']')},
    };
    for (const auto& [bytes, failed, tree] : cases) {
        VtSymbolGroup loaded(&lib);
        EXPECT_EQ(LoadFailed(loaded, bytes, 0), failed) << tree;
        EXPECT_EQ(Tree(&loaded), tree);
    }
}

}  // namespace
