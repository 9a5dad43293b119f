#include "LateEnd.h"

void (*doAtLast)() = nullptr;

namespace {

struct End
{
    ~End()
    {
        if (doAtLast)
            doAtLast();
    }
};

const End end;

} // namespace
