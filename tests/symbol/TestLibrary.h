#pragma once

// A minimal concrete symbol library for the tests of the library and the group
// tree. Its stream image is: the format version, the symbol count, each
// symbol's ID and name, then the root group's record.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LqStream.h"
#include "LqTestSupport.h"
#include "LqToolkit.h"
#include "VtSymbol.h"
#include "VtSymbolGroup.h"
#include "VtSymbolLib.h"

namespace lqtest {

using ZEDA::ZedaUnicodeString;
using Codes = std::vector<std::string>;

// The log records since the last call, oldest first, as "lib:CODE" or
// "group:CODE"; each must be at level 300 and carry a line.
inline Codes TakeLog()
{
    Codes codes;
    for (const auto& record : TakeLogRecords()) {
        EXPECT_EQ(record.level, 300);
        EXPECT_GT(record.line, 0);
        const bool fromLib = record.source == "Src/Symbol/VtSymbolLib";
        EXPECT_TRUE(fromLib || record.source == "Src/Symbol/VtSymbolGroup") << record.source;
        codes.push_back((fromLib ? "lib:" : "group:") + record.code);
    }
    return codes;
}

// Expects `statement` to leave exactly the log records listed after it.
#define EXPECT_LOGS(statement, ...)                                                \
    do {                                                                           \
        lqtest::TakeLog();                                                         \
        statement;                                                                 \
        EXPECT_EQ(lqtest::TakeLog(), (lqtest::Codes{__VA_ARGS__})) << #statement; \
    } while (false)

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
        return ReadImage(stream, false);
    }

    // Appended symbols may be renumbered, so their stored group tree is skipped.
    unsigned char AppendFromStream(VTC::VtStream& stream, unsigned char /*flag*/) override
    {
        return ReadImage(stream, true);
    }

    unsigned char SaveToStream(VTC::VtStream& stream, unsigned int fileVersion, unsigned char /*flag*/) override
    {
        stream.WriteInt(static_cast<int>(fileVersion));
        stream.WriteInt(GetSymbolCount());
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
        cachePath = ZedaUnicodeString(path);  // copied first: `path` may be `cachePath` itself
    }

    const std::vector<int>& IdList() const { return idList; }

private:
    // Stops at a symbol count that the rest of the stream cannot hold (8 bytes a symbol at least).
    unsigned char ReadImage(VTC::VtStream& stream, bool append)
    {
        int fileVersion = 0;
        int count = 0;
        if (!stream.ReadInt(fileVersion) || !stream.ReadInt(count) || count < 0 || count > stream.GetRemaining() / 8)
            return 0;
        if (!append)
            version = static_cast<unsigned int>(fileVersion);
        for (int i = 0; i < count; ++i) {
            int id = 0;
            ZedaUnicodeString symbolName;
            stream.ReadInt(id);
            stream >> symbolName;
            if (stream.IsFailed())
                return 0;
            if (append)
                AddSymbol(new TestSymbol(id, symbolName), nullptr);
            else
                InsertAt(-1, new TestSymbol(id, symbolName));
        }
        VTC::VtSymbolGroup skipped(this);
        VTC::VtSymbolGroup* tree = append ? &skipped : rootGroup;
        tree->Clear();
        tree->Load(stream, static_cast<unsigned int>(fileVersion));
        return stream.IsFailed() ? 0 : 1;
    }

    int libType_;
};

}  // namespace lqtest
