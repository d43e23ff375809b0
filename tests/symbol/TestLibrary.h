#pragma once

// A minimal concrete symbol library for the tests of the library and the group
// tree. Its stream image is: the format version, the symbol count, each
// symbol's ID and name, then the root group's record.

#include "LqStream.h"
#include "VtSymbol.h"
#include "VtSymbolGroup.h"
#include "VtSymbolLib.h"

namespace lqtest {

using ZEDA::ZedaUnicodeString;

class TestSymbol : public VTC::VtSymbol {
public:
    TestSymbol(int id, const ZedaUnicodeString& symbolName)
    {
        ID = id;
        name = symbolName;
        ++liveCount;
    }
    ~TestSymbol() override { --liveCount; }

    // Symbols alive in the process, to see which ones a library destroyed.
    static inline int liveCount = 0;
};

class TestLibrary : public VTC::VtSymbolLib {
public:
    explicit TestLibrary(int libType = 0) : libType_(libType) {}

    // Adds a new symbol, filed into `group` (the root when null); returns its ID.
    int Add(int id, const ZedaUnicodeString& symbolName, VTC::VtSymbolGroup* group = nullptr)
    {
        auto* symbol = new TestSymbol(id, symbolName);
        AddSymbol(symbol, group);
        return symbol->ID;
    }

    unsigned char LoadFromStream(VTC::VtStream& stream, unsigned char /*flag*/) override
    {
        RemoveAll();
        int fileVersion = 0;
        if (!stream.ReadInt(fileVersion))
            return 0;
        version = static_cast<unsigned int>(fileVersion);
        if (!ReadSymbols(stream, [this](TestSymbol* symbol) { InsertAt(-1, symbol); }))
            return 0;
        rootGroup->Clear();
        rootGroup->Load(stream, version);
        return stream.IsFailed() ? 0 : 1;
    }

    // Appends the symbols to the root group; the stored group tree is skipped
    // because appended symbols may have been renumbered.
    unsigned char AppendFromStream(VTC::VtStream& stream, unsigned char /*flag*/) override
    {
        int fileVersion = 0;
        if (!stream.ReadInt(fileVersion))
            return 0;
        if (!ReadSymbols(stream, [this](TestSymbol* symbol) { AddSymbol(symbol, nullptr); }))
            return 0;
        VTC::VtSymbolGroup skipped(this);
        skipped.Load(stream, static_cast<unsigned int>(fileVersion));
        return stream.IsFailed() ? 0 : 1;
    }

    unsigned char SaveToStream(VTC::VtStream& stream, unsigned int fileVersion, unsigned char /*flag*/) override
    {
        const int storedVersion = static_cast<int>(fileVersion);
        stream.WriteInt(storedVersion);
        const int count = GetSymbolCount();
        stream.WriteInt(count);
        for (int id : idList) {
            stream.WriteInt(id);
            stream << symbols.at(id)->name;
        }
        rootGroup->Save(stream, fileVersion, 0);
        return 1;
    }

    int GetLibType() const override { return libType_; }

    void SetCachePath(const ZedaUnicodeString& path) override
    {
        const ZedaUnicodeString newPath(path);  // `path` may be `cachePath` itself
        cachePath = newPath;
    }

    const std::vector<int>& IdList() const { return idList; }

private:
    // Reads the count and the symbols, handing each to `take`. Stops at a
    // count the rest of the stream cannot hold (8 bytes per symbol at least).
    template <typename Take>
    static bool ReadSymbols(VTC::VtStream& stream, Take take)
    {
        int count = 0;
        if (!stream.ReadInt(count) || count < 0 || count > stream.GetRemaining() / 8)
            return false;
        for (int i = 0; i < count; ++i) {
            int id = 0;
            ZedaUnicodeString symbolName;
            if (!stream.ReadInt(id))
                return false;
            stream >> symbolName;
            if (stream.IsFailed())
                return false;
            take(new TestSymbol(id, symbolName));
        }
        return true;
    }

    int libType_;
};

}  // namespace lqtest
