#pragma once

#include "LqBase.h"

namespace VTC {

using ZEDA::ZedaUnicodeString;

// The polymorphic base of every symbol. A library reads and writes these three
// members directly and destroys symbols through this base.
class LQ_EXPORT VtSymbol {
public:
    VtSymbol() = default;
    virtual ~VtSymbol();

    int ID = -1;
    ZedaUnicodeString name;
    unsigned int libVersion = 0;

protected:
    VtSymbol(const VtSymbol&) = default;
    VtSymbol& operator=(const VtSymbol&) = default;
};

// The empty string, for passing "" by reference.
extern LQ_EXPORT const ZedaUnicodeString g_stStringBlank;

}  // namespace VTC
