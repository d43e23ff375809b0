#include "ZedaGradient.h"

#include "ZedaColour.h"

namespace ZEDA {

namespace {

unsigned char Channel(unsigned char from, unsigned char to, double t)
{
    const int difference = static_cast<int>(to) - static_cast<int>(from);
    return static_cast<unsigned char>(from + static_cast<int>(difference * t));
}

}  // namespace

unsigned int GradientColour(unsigned int colour1, unsigned int colour2, double t)
{
    if (!(t <= 1.0))
        t = 1.0;
    else if (t < 0.0)
        t = 0.0;
    return ZEDARGB(Channel(ZEDAREDVAL(colour1), ZEDAREDVAL(colour2), t),
                   Channel(ZEDAGREENVAL(colour1), ZEDAGREENVAL(colour2), t),
                   Channel(ZEDABLUEVAL(colour1), ZEDABLUEVAL(colour2), t));
}

}  // namespace ZEDA
