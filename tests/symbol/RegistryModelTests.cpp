// Random sequences of registry and membership operations, run on a library
// and on a plain model of the same rules that keeps no index: every result,
// every log record (source and code, in order), every exception and the whole
// state must agree after each operation.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "TestLibrary.h"

#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

namespace {

using lqtest::Codes;
using lqtest::TestLibrary;
using lqtest::TestSymbol;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

// ---- The model ----

struct ModelGroup {
    std::string name;
    std::vector<int> items;
    std::vector<std::unique_ptr<ModelGroup>> children;
    ModelGroup* parent = nullptr;
};

// What a call gave back: a number, or the exception it let through.
struct Outcome {
    long long value = 0;
    bool threw = false;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

class Model {
public:
    Codes log;
    std::vector<int> idList;
    std::map<int, std::string> symbols;
    ModelGroup root{"RootGroup", {}, {}, nullptr};

    void Lib(const char* code) { log.push_back(std::string("lib:") + code); }
    void Group(const char* code) { log.push_back(std::string("group:") + code); }

    int FindID(int id)
    {
        const auto found = std::find(idList.begin(), idList.end(), id);
        if (found == idList.end()) {
            Lib("EGa038");
            return -1;
        }
        return static_cast<int>(found - idList.begin());
    }
    bool IsIDExisted(int id) { return FindID(id) != -1; }
    int GetMaxID() const { return idList.empty() ? 0 : std::max(0, *std::max_element(idList.begin(), idList.end())); }

    // The ID the symbol ends up with, or nothing when it is refused.
    std::optional<int> AddSymbol(int id, const std::string& name, ModelGroup& group)
    {
        if (id < 0 || IsIDExisted(id)) {
            if (GetMaxID() == INT_MAX) {
                Lib("EGa049");
                return std::nullopt;
            }
            id = GetMaxID() + 1;
        }
        symbols[id] = name;
        idList.push_back(id);
        AddItem(group, id, true);
        return id;
    }

    void InsertAt(int index, int id, const std::string& name)
    {
        symbols[id] = name;
        const auto position = std::min<std::uint64_t>(static_cast<std::uint64_t>(index), idList.size());
        idList.insert(idList.begin() + static_cast<std::ptrdiff_t>(position), id);
    }

    int RemoveAt(int index, int count)
    {
        const int n = static_cast<int>(idList.size());
        if (index < 0 || index > n || count < 1) {
            Lib("EDb001");
            Lib("EGa020");
            return 0;
        }
        const int last = static_cast<int>(std::min<long long>(static_cast<long long>(index) + count - 1, n - 1));
        for (int i = index; i <= last; ++i)
            symbols.erase(idList[static_cast<std::size_t>(i)]);
        const int removed = last - index + 1;
        if (removed > 0)
            idList.erase(idList.begin() + index, idList.begin() + index + removed);
        return std::max(removed, 0);
    }

    bool RemoveID(int id)
    {
        const int position = FindID(id);
        if (position == -1 || !symbols.contains(id)) {
            Lib("EGa030");
            Lib("EGa022");
            return false;
        }
        symbols.erase(id);
        idList.erase(idList.begin() + position);
        return true;
    }

    bool Swap(int a, int b)
    {
        const int n = static_cast<int>(idList.size());
        if (a < 0 || a >= n || b < 0 || b >= n) {
            Lib("EDb009");
            return false;
        }
        std::swap(idList[static_cast<std::size_t>(a)], idList[static_cast<std::size_t>(b)]);
        return true;
    }

    bool SetIDAt(int index, int newID)
    {
        if (IsIDExisted(newID)) {
            Lib("EGa048");
            return false;
        }
        const int oldID = idList.at(static_cast<std::size_t>(index));
        if (!symbols.contains(oldID)) {
            Lib("EGa038");
            return false;
        }
        idList[static_cast<std::size_t>(index)] = newID;
        const std::string name = symbols[oldID];
        symbols.erase(oldID);
        symbols[newID] = name;
        return true;
    }

    int FindItemID(ModelGroup& group, int id)
    {
        const auto found = std::find(group.items.begin(), group.items.end(), id);
        if (found == group.items.end()) {
            Group("EDd003");
            return -1;
        }
        return static_cast<int>(found - group.items.begin());
    }

    bool IsExistID(ModelGroup& group, int id)
    {
        if (FindItemID(group, id) != -1)
            return true;
        for (auto& child : group.children) {
            if (IsExistID(*child, id))
                return true;
        }
        return false;
    }

    ModelGroup* FindChildGroupWithID(ModelGroup& group, int id)
    {
        if (FindItemID(group, id) != -1)
            return &group;
        for (auto& child : group.children) {
            if (ModelGroup* found = FindChildGroupWithID(*child, id))
                return found;
        }
        Group("EGa041");
        return nullptr;
    }

    bool AddItem(ModelGroup& group, int id, bool move)
    {
        if (!IsIDExisted(id)) {
            Group("EGa038");
            return false;
        }
        if (move) {
            RemoveItemOnlyInGroup(root, id);
        } else if (IsExistID(root, id)) {
            Group("EGa037");
            return false;
        }
        group.items.push_back(id);
        return true;
    }

    void RemoveItemOnlyInGroup(ModelGroup& group, int id)
    {
        const int position = FindItemID(group, id);
        if (position != -1)
            group.items.erase(group.items.begin() + position);
        for (auto& child : group.children)
            RemoveItemOnlyInGroup(*child, id);
    }

    bool RemoveSymbol(ModelGroup& group, int id)
    {
        const int position = FindItemID(group, id);
        if (position != -1) {
            group.items.erase(group.items.begin() + position);
            return RemoveID(id);
        }
        for (auto& child : group.children) {
            if (RemoveSymbol(*child, id))
                return true;
        }
        Group("EGa022");
        return false;
    }

    int RemoveItem(ModelGroup& group, int index, int count)
    {
        const int n = static_cast<int>(group.items.size());
        if (n < 1 || index < 0 || index > n || count < 1) {
            Group("EGa021");
            return 0;
        }
        const int last = static_cast<int>(std::min<long long>(static_cast<long long>(index) + count - 1, n - 1));
        for (int i = index; i <= last; ++i)
            RemoveID(group.items[static_cast<std::size_t>(i)]);
        const int removed = last - index + 1;
        if (removed > 0)
            group.items.erase(group.items.begin() + index, group.items.begin() + index + removed);
        return std::max(removed, 0);
    }

    bool MoveItemTo(ModelGroup& group, int id, ModelGroup& target)
    {
        if (&target == &group) {
            Group("EGa036");
            return false;
        }
        const int position = FindItemID(group, id);
        if (position == -1) {
            Group("EGa042");
            return false;
        }
        group.items.erase(group.items.begin() + position);
        AddItem(target, id, false);
        return true;
    }

    int MoveItemsTo(ModelGroup& group, int index, int count, ModelGroup& target)
    {
        const int n = static_cast<int>(group.items.size());
        if (&target == &group || index < 0 || index > n || count < 1)
            return 0;
        const int last = static_cast<int>(std::min<long long>(static_cast<long long>(index) + count - 1, n - 1));
        const int moved = last - index + 1;
        if (moved <= 0)
            return 0;
        const std::vector<int> run(group.items.begin() + index, group.items.begin() + index + moved);
        group.items.erase(group.items.begin() + index, group.items.begin() + index + moved);
        for (const int id : run)
            AddItem(target, id, false);
        return moved;
    }

    bool SetItemID(ModelGroup& group, int index, int newID)
    {
        if (index < 0 || index >= static_cast<int>(group.items.size())) {
            Group("EDb001");
            Group("EGa047");
            return false;
        }
        const int oldID = group.items[static_cast<std::size_t>(index)];
        if (newID == oldID) {
            Group("EEe010");
            return true;
        }
        if (!SetIDAt(FindID(oldID), newID)) {
            Group("EGa047");
            return false;
        }
        group.items[static_cast<std::size_t>(index)] = newID;
        return true;
    }

    ModelGroup* CreateChildGroup(ModelGroup& group, const std::string& name)
    {
        for (const auto& child : group.children) {
            if (child->name == name) {
                Group("EGa046");
                Group("EGa045");
                return nullptr;
            }
        }
        group.children.push_back(std::make_unique<ModelGroup>(ModelGroup{name, {}, {}, &group}));
        return group.children.back().get();
    }

    bool RemoveChild(ModelGroup& group, int index, bool keepContents)
    {
        if (index < 0 || index >= static_cast<int>(group.children.size())) {
            Group("EDb009");
            return false;
        }
        ModelGroup& child = *group.children[static_cast<std::size_t>(index)];
        const int grandchildren = static_cast<int>(child.children.size());
        if (!keepContents) {
            for (int i = 0; i < grandchildren; ++i)
                RemoveChild(child, i, false);
            RemoveItem(child, 0, static_cast<int>(child.items.size()));
        } else {
            for (auto& grandchild : child.children) {
                const bool taken = std::any_of(group.children.begin(), group.children.end(),
                                               [&](const auto& c) { return c->name == grandchild->name; });
                if (grandchild->name != child.name && taken)
                    grandchild->name += child.name;
                grandchild->parent = &group;
                group.children.push_back(std::move(grandchild));
            }
            child.children.clear();
            MoveItemsTo(child, 0, static_cast<int>(child.items.size()), group);
        }
        group.children.erase(group.children.begin() + index);
        return true;
    }

    bool MoveChildTo(ModelGroup& group, int index, ModelGroup& target)
    {
        if (index < 0 || index >= static_cast<int>(group.children.size()))
            return false;
        ModelGroup* child = group.children[static_cast<std::size_t>(index)].get();
        for (const ModelGroup* p = target.parent; p != nullptr; p = p->parent) {
            if (p == child)
                return false;
        }
        if (child->parent == &target)
            return false;
        std::unique_ptr<ModelGroup> moved = std::move(group.children[static_cast<std::size_t>(index)]);
        group.children.erase(group.children.begin() + index);
        moved->parent = &target;
        target.children.push_back(std::move(moved));
        return true;
    }
};

// ---- The library under test ----

class ModelledLibrary : public TestLibrary {
public:
    const std::map<int, VTC::VtSymbol*>& Symbols() const { return symbols; }
};

int ChildCount(const ModelGroup& group) { return static_cast<int>(group.children.size()); }
ModelGroup* Child(ModelGroup& group, int i) { return group.children[static_cast<std::size_t>(i)].get(); }
int ChildCount(const VtSymbolGroup& group) { return group.GetChildGroupCount(); }
VtSymbolGroup* Child(VtSymbolGroup& group, int i) { return group.GetChildGroup(i); }

template <typename Group>
void PreOrder(Group* group, std::vector<Group*>& out)
{
    std::vector<Group*> pending{group};
    while (!pending.empty()) {
        Group* next = pending.back();
        pending.pop_back();
        out.push_back(next);
        for (auto i = ChildCount(*next); i > 0; --i)
            pending.push_back(Child(*next, i - 1));
    }
}
// One step: a kind and four numbers that each kind maps onto its arguments.
struct Step {
    int kind = 0;
    int a = 0;
    int b = 0;
    int c = 0;
    int d = 0;
};

constexpr int stepKinds = 21;  // the last one reloads or clears

class Runner {
public:
    Runner() { lqtest::TakeLog(); }
    ~Runner()
    {
        lib.RemoveAll();
        lqtest::TakeLog();
    }

    void Run(const Step& step)
    {
        std::vector<ModelGroup*> modelGroups;
        std::vector<VtSymbolGroup*> groups;
        PreOrder(&model.root, modelGroups);
        PreOrder(lib.GetRootGroup(), groups);
        RC_ASSERT(modelGroups.size() == groups.size());
        const auto pick = [&](int n) { return static_cast<std::size_t>(n) % groups.size(); };
        ModelGroup& mg = *modelGroups[pick(step.a)];
        VtSymbolGroup& g = *groups[pick(step.a)];
        ModelGroup& mTarget = *modelGroups[pick(step.b)];
        VtSymbolGroup& target = *groups[pick(step.b)];
        // IDs mostly among those in use, sometimes free, negative or at the top of the range.
        const int id = step.c % 8 == 7 ? INT_MAX - step.c % 2 : step.c % 200 - 1;
        const int index = step.d % 260 - 2;
        const int count = step.b % 9 - 1;

        switch (step.kind) {
        case 0:  // a run of new symbols
            for (int i = 0; i <= step.d % 40; ++i)
                Add(-1, mg, g);
            return;
        case 1:
            return Add(id, mg, g);
        case 2:
            return Compare(model.FindID(id), [&] { return lib.FindID(id); });
        case 3:
            return Compare(model.RemoveID(id), [&] { return lib.RemoveID(id); });
        case 4:
            return Compare(model.RemoveAt(index, count), [&] { return lib.RemoveAt(index, count); });
        case 5:
            return Compare(model.Swap(index, step.c % 260 - 2), [&] { return lib.Swap(index, step.c % 260 - 2); });
        case 6:
            std::sort(model.idList.begin(), model.idList.end());
            return Compare(0, [&] { return lib.SortByID(), 0; });
        case 7:
            return CompareOrThrow([&] { return model.SetIDAt(index, id); }, [&] { return lib.SetIDAt(index, id); });
        case 8:
            return Insert(index, id);
        case 9:
            return Compare(model.FindItemID(mg, id), [&] { return g.FindItemID(id); });
        case 10:
            return Compare(model.AddItem(mg, id, step.d % 2 == 0), [&] { return g.AddItem(id, step.d % 2 == 0); });
        case 11:
            return Compare(model.RemoveSymbol(mg, id), [&] { return g.RemoveSymbol(id); });
        case 12:
            return Compare(model.RemoveItem(mg, index, count), [&] { return g.RemoveItem(index, count); });
        case 13:
            return Compare(model.MoveItemTo(mg, id, mTarget), [&] { return g.MoveItemTo(id, &target); });
        case 14:
            return Compare(model.MoveItemsTo(mg, index, count, mTarget),
                           [&] { return g.MoveItemTo(index, count, &target); });
        case 15:
            return CompareOrThrow([&] { return model.SetItemID(mg, index, id); },
                                  [&] { return g.SetItemID(index, id); });
        case 16:
            std::sort(mg.items.begin(), mg.items.end());
            return Compare(0, [&] { return g.SortByID(), 0; });
        case 17: {
            const std::string name = "g" + std::to_string(step.d % 4);
            return Compare(model.CreateChildGroup(mg, name) != nullptr,
                           [&] { return g.CreateChildGroup(ZedaUnicodeString::FromUtf8(name)) != nullptr; });
        }
        case 18:
            return Compare(model.RemoveChild(mg, step.d % 4 - 1, step.c % 2 == 0),
                           [&] { return g.RemoveChild(step.d % 4 - 1, step.c % 2 == 0); });
        case 19:
            if (static_cast<std::size_t>(step.d % 3) < mg.children.size() &&
                &mTarget == mg.children[static_cast<std::size_t>(step.d % 3)].get())
                return;  // moving a child under itself detaches it from the tree
            return Compare(model.MoveChildTo(mg, step.d % 3, mTarget), [&] { return g.MoveChildTo(step.d % 3, &target); });
        default:
            return Reload(step.d % 3);
        }
    }

    // The whole state: user order, symbols by ID, and every group in pre-order.
    void CompareState()
    {
        RC_ASSERT(lib.IdList() == model.idList);
        RC_ASSERT(lib.Symbols().size() == model.symbols.size());
        RC_ASSERT(TestSymbol::liveCount - liveBefore == static_cast<int>(model.symbols.size()));
        for (const auto& [id, symbol] : lib.Symbols()) {
            RC_ASSERT(model.symbols.contains(id));
            RC_ASSERT(symbol->ID == id);
            RC_ASSERT(symbol->name.ToUtf8() == model.symbols.at(id));
        }
        std::vector<ModelGroup*> modelGroups;
        std::vector<VtSymbolGroup*> groups;
        PreOrder(&model.root, modelGroups);
        PreOrder(lib.GetRootGroup(), groups);
        RC_ASSERT(modelGroups.size() == groups.size());
        for (std::size_t i = 0; i < groups.size(); ++i) {
            RC_ASSERT(groups[i]->GetGroupName().ToUtf8() == modelGroups[i]->name);
            std::vector<int> items;
            for (int j = 0; j < groups[i]->GetItemCount(); ++j)
                items.push_back(groups[i]->GetItemID(j));
            RC_ASSERT(items == modelGroups[i]->items);
        }
        RC_ASSERT(lib.GetMaxID() == model.GetMaxID());
        // Listed IDs, a spread of them, are found where the model finds them.
        const std::size_t stride = model.idList.size() / 40 + 1;
        for (std::size_t i = 0; i < model.idList.size(); i += stride) {
            const int id = model.idList[i];
            Compare(model.FindID(id), [&] { return lib.FindID(id); });
        }
    }

private:
    template <typename Call>
    void Compare(long long expected, Call call)
    {
        const long long actual = static_cast<long long>(call());
        RC_ASSERT(actual == expected);
        RC_ASSERT(lqtest::TakeLog() == model.log);
        model.log.clear();
    }

    template <typename ModelCall, typename Call>
    void CompareOrThrow(ModelCall modelCall, Call call)
    {
        const auto attempt = [](auto&& f) {
            try {
                return Outcome{static_cast<long long>(f()), false};
            } catch (const std::out_of_range&) {
                return Outcome{0, true};
            }
        };
        const Outcome expected = attempt(modelCall);
        const Outcome actual = attempt(call);
        RC_ASSERT(actual == expected);
        RC_ASSERT(lqtest::TakeLog() == model.log);
        model.log.clear();
    }

    void Add(int id, ModelGroup& mg, VtSymbolGroup& g)
    {
        const std::string name = "s" + std::to_string(++created);
        const std::optional<int> expected = model.AddSymbol(id, name, mg);
        auto symbol = std::make_unique<TestSymbol>(id, ZedaUnicodeString::FromUtf8(name));
        const bool added = lib.AddSymbol(symbol.get(), &g) != 0;
        RC_ASSERT(added == expected.has_value());
        if (added) {
            RC_ASSERT(symbol->ID == *expected);
            symbol.release();
        }
        RC_ASSERT(lqtest::TakeLog() == model.log);
        model.log.clear();
    }

    // A raw insertion of a listed ID replaces the map's pointer: the test frees the old symbol.
    void Insert(int index, int id)
    {
        const std::string name = "s" + std::to_string(++created);
        model.InsertAt(index, id, name);
        const auto found = lib.Symbols().find(id);
        std::unique_ptr<VTC::VtSymbol> replaced(found == lib.Symbols().end() ? nullptr : found->second);
        lib.InsertAt(index, new TestSymbol(id, ZedaUnicodeString::FromUtf8(name)));
        RC_ASSERT(lqtest::TakeLog() == model.log);
    }

    // The tree written and read back (the model stays as it is), the root
    // cleared, or the whole library emptied.
    void Reload(int how)
    {
        if (how > 0) {
            model.root.items.clear();
            model.root.children.clear();
            if (how == 2) {
                model.symbols.clear();
                model.idList.clear();
                lib.RemoveAll();
            } else {
                lib.GetRootGroup()->Clear();
            }
            return;
        }
        VTC::VtMemoryStream stream;
        stream.Open(VTC::VT_STREAM_READWRITE);
        lib.GetRootGroup()->Save(stream, 0, 0);
        stream.SetPosition(0, 0);
        lib.GetRootGroup()->Clear();
        lib.GetRootGroup()->Load(stream, 0);
        RC_ASSERT(!stream.IsFailed());
    }

    Model model;
    ModelledLibrary lib;
    int created = 0;
    const int liveBefore = TestSymbol::liveCount;
};

RC_GTEST_PROP(RegistryModel, EveryResultLogAndStateMatchesThePlainModel, ())
{
    const auto steps = *rc::gen::container<std::vector<Step>>(rc::gen::build<Step>(
        rc::gen::set(&Step::kind, rc::gen::inRange(0, stepKinds)), rc::gen::set(&Step::a, rc::gen::inRange(0, 1000)),
        rc::gen::set(&Step::b, rc::gen::inRange(0, 1000)), rc::gen::set(&Step::c, rc::gen::inRange(0, 1000)),
        rc::gen::set(&Step::d, rc::gen::inRange(0, 1000))));
    Runner runner;
    for (const Step& step : steps) {
        runner.Run(step);
        runner.CompareState();
    }
}

}  // namespace
