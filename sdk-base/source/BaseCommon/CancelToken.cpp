#include "CancelToken.h"

#include "Interruption.h"

#include <exception>

namespace orlo {

CancelToken::CancelToken() : m_interruption(std::make_shared<Interruption>())
{}

// Not moved: a token is never without what it cancels.
CancelToken::~CancelToken() = default;
CancelToken::CancelToken(const CancelToken&) = default;
CancelToken& CancelToken::operator=(const CancelToken&) = default;

void CancelToken::cancel() const noexcept
{
    try {
        m_interruption->request();
    }
    catch (const std::exception&) { // no memory to wake somebody with; he sees it at his next step
    }
}

bool CancelToken::isCancelled() const noexcept
{
    return m_interruption->isRequested();
}

} // namespace orlo
