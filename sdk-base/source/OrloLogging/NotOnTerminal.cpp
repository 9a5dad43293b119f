#include "NotOnTerminal.h"

namespace orlo::log {

namespace {

thread_local unsigned keptOff = 0;

} // namespace

NotOnTerminal::NotOnTerminal(bool applies) : m_applies(applies)
{
    keptOff += m_applies ? 1 : 0;
}

NotOnTerminal::~NotOnTerminal()
{
    keptOff -= m_applies ? 1 : 0;
}

bool NotOnTerminal::isInForce()
{
    return keptOff > 0;
}

} // namespace orlo::log
