#include "ErrorCode.h"

#include <utility>

namespace orlo {

ErrorCategory::~ErrorCategory() = default;

GenericError::GenericError(const std::wstring& message) : GenericError(L"GenericError", message)
{}

GenericError::GenericError(const std::wstring& name, const std::wstring& message) : m_name(name), m_message(message)
{}

GenericError::~GenericError() = default;

HttpError::HttpError(const std::wstring& name, const std::wstring& message, int code, int subcode)
    : m_name(name), m_message(message), m_code(code), m_subcode(subcode)
{}

HttpError::~HttpError() = default;

std::shared_ptr<GenericError> makeGenericError(const std::wstring& message)
{
    return std::make_shared<GenericError>(message);
}

std::shared_ptr<GenericError> makeGenericError(const std::wstring& name, const std::wstring& message)
{
    return std::make_shared<GenericError>(name, message);
}

std::shared_ptr<HttpError> makeHttpError(const std::wstring& name, const std::wstring& message, int code, int subcode)
{
    return std::make_shared<HttpError>(name, message, code, subcode);
}

ErrorCode::ErrorCode() = default;

ErrorCode::ErrorCode(long long value, std::shared_ptr<ErrorCategory> category) : m_value(value), m_category(std::move(category))
{}

ErrorCode::ErrorCode(const ErrorCode&) = default;
ErrorCode::ErrorCode(ErrorCode&&) noexcept = default;
ErrorCode& ErrorCode::operator=(const ErrorCode&) = default;
ErrorCode& ErrorCode::operator=(ErrorCode&&) noexcept = default;
ErrorCode::~ErrorCode() = default;

void ErrorCode::Assign(long long value, std::shared_ptr<ErrorCategory> category)
{
    m_value = value;
    m_category = std::move(category);
}

void ErrorCode::Clear()
{
    Assign(error::none, nullptr);
}

std::wstring ErrorCode::GetErrorMessage() const
{
    return m_category ? m_category->GetErrorMessage() : std::wstring();
}

ErrorCode cancelledError()
{
    return {error::cancelled, makeGenericError(L"Cancelled", L"cancelled")};
}

bool isCancelled(const ErrorCode& error)
{
    return error.GetValue() == error::cancelled;
}

} // namespace orlo
