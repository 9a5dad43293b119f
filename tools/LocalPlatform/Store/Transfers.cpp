#include "Transfers.h"

namespace orlo::platform {

std::string Transfers::plainPutAnswer() const
{
    const std::lock_guard lock(m_mutex);
    return m_plainPutAnswer;
}

void Transfers::setPlainPutAnswer(const std::string& body)
{
    const std::lock_guard lock(m_mutex);
    m_plainPutAnswer = body;
}

} // namespace orlo::platform
