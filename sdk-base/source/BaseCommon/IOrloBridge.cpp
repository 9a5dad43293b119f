#include "IOrloBridge.h"

namespace orlo {

IOrloBridge* IOrloBridge::m_pBridge = nullptr;

IOrloBridge::IOrloBridge() = default;
IOrloBridge::~IOrloBridge() = default;

} // namespace orlo
