#pragma once

#include <BaseCommon/Export.h>

#include <cstdint>
#include <memory>
#include <string>

#if defined(_MSC_VER)
#pragma warning(push)
#pragma warning(disable : 4251) // private members of standard types
#endif

namespace orlo {

/// What went wrong, in words. Shared between copies of an ErrorCode; immutable once made.
class ORLO_BASE_API ErrorCategory
{
public:
    virtual ~ErrorCategory();
    virtual const std::wstring& GetName() const = 0;
    virtual const std::wstring& GetErrorMessage() const = 0;
};

/// A refused input, or an answer whose content is unusable. Never worth another attempt.
class ORLO_BASE_API GenericError : public ErrorCategory
{
public:
    /// The name is "GenericError".
    explicit GenericError(const std::wstring& message);
    GenericError(const std::wstring& name, const std::wstring& message);
    ~GenericError() override;

    const std::wstring& GetName() const override { return m_name; }
    const std::wstring& GetErrorMessage() const override { return m_message; }

private:
    std::wstring m_name;
    std::wstring m_message;
};

/// A failure of the transport, an error status, or an exception that was caught.
/// The code is the HTTP status, the error number of the transport, 5555 for an exception, 5556 for an unknown one.
class ORLO_BASE_API HttpError : public ErrorCategory
{
public:
    HttpError(const std::wstring& name, const std::wstring& message, int code, int subcode);
    ~HttpError() override;

    const std::wstring& GetName() const override { return m_name; }
    const std::wstring& GetErrorMessage() const override { return m_message; }
    int GetCode() const { return m_code; }
    int GetSubcode() const { return m_subcode; }

private:
    std::wstring m_name;
    std::wstring m_message;
    int m_code;
    int m_subcode;
};

/// Categories that outlive the library which asks for them: a caller may have the ErrorCode when that is unloaded.
ORLO_BASE_API std::shared_ptr<GenericError> makeGenericError(const std::wstring& message);
ORLO_BASE_API std::shared_ptr<GenericError> makeGenericError(const std::wstring& name, const std::wstring& message);
ORLO_BASE_API std::shared_ptr<HttpError> makeHttpError(const std::wstring& name, const std::wstring& message, int code, int subcode);

/// Values of an ErrorCode. The assigned ones are positive 64-bit numbers, while the second "no error" value is
/// the sign-extended form; that asymmetry is intended and part of the interface.
namespace error {
constexpr long long none = 0;
constexpr long long success = static_cast<long long>(0xFFFFFFFFE8000000ULL);
constexpr long long badInput = 0xE8000001LL;
constexpr long long exception = 0xE8000002LL;
constexpr long long emptyParameter = 0xE8000005LL;
/// The host's own doing, through a CancelToken: no operation gives it outside of a CallScope and of a job with a token.
constexpr long long cancelled = 0xE8000006LL;
/// An answer with a status of 400 or above; sign-extended.
constexpr long long errorStatus = static_cast<long long>(0xFFFFFFFFE8000002ULL);
} // namespace error

/// The outcome of one call. The caller owns it and hands it over as the last argument; it belongs to that call alone
/// until the call has returned (or its future is ready).
class ORLO_BASE_API ErrorCode
{
public:
    /// No error.
    ErrorCode();
    ErrorCode(long long value, std::shared_ptr<ErrorCategory> category);
    ErrorCode(const ErrorCode&);
    ErrorCode(ErrorCode&&) noexcept;
    ErrorCode& operator=(const ErrorCode&);
    ErrorCode& operator=(ErrorCode&&) noexcept;
    virtual ~ErrorCode();

    void Assign(long long value, std::shared_ptr<ErrorCategory> category);
    /// Back to no error and no category.
    void Clear();

    long long GetValue() const { return m_value; }
    /// Null where there is none.
    const std::shared_ptr<ErrorCategory>& GetCategory() const { return m_category; }
    /// The category's message as it stands; for an error status that is the body of the answer. Empty without a category.
    std::wstring GetErrorMessage() const;

    /// Whether the value is one of the two that mean no error.
    bool isClear() const { return m_value == error::none || m_value == error::success; }

private:
    long long m_value = error::none;
    std::shared_ptr<ErrorCategory> m_category;
};

/// What an operation gives that was cancelled: error::cancelled and the message "cancelled".
ORLO_BASE_API ErrorCode cancelledError();
/// Whether the host cancelled what this tells of, so that it was no failure.
ORLO_BASE_API bool isCancelled(const ErrorCode& error);

} // namespace orlo

#if defined(_MSC_VER)
#pragma warning(pop)
#endif
