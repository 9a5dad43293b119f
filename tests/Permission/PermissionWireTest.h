#pragma once

#include "support/WireTest.h"

#include <OrloProjectManager/Permission/IDatasetPermission.h>

#include <string>

namespace orlo::test {

// What goes over the wire for the dataset "d-1", and what is logged about it.
inline constexpr const char* applyToWrite = "/v3/dataset/d-1/xmonitor/apply?ack=1";
inline constexpr const char* applyToWriteHolding = "/v3/dataset/d-1/xmonitor/apply?token=held-token-0&ack=1";
inline constexpr const char* applyToRead = "/dataset/d-1/smonitor/apply?ack=1";
inline constexpr const char* acknowledgeWriting = "/dataset/d-1/monitor/ack?token=write-token-1";
inline constexpr const char* acknowledgeReading = "/dataset/d-1/monitor/ack?token=read-token-1";
inline constexpr const char* writers = "/dataset/xmonitor/list";

inline constexpr const char* writeGranted = R"({"code":10000,"data":{"token":"write-token-1","monitor":2}})";
inline constexpr const char* readGranted = R"({"code":10000,"data":{"token":"read-token-1","monitor":1}})";
inline constexpr const char* writeRefused = R"({"code":40901,"msg":"zhang is writing 大厅"})";
inline constexpr const char* success = R"({"code":10000,"msg":"success"})";
inline constexpr const char* untold = R"({"code":-1,"msg":""})";

/// The user "user-1" asks a scripted platform about "d-1".
class PermissionWireTest : public WireTest
{
protected:
    EDatasetPermission ask() { return IDatasetPermission::GetDatasetPermission("d-1", result, error); }

    /// The token that the user has kept; empty for none.
    static std::string kept();
    /// Lets the user have kept "held-token-0".
    static void hold();

    std::string result = "untouched";
};

// The lines of a question, in order.
inline const std::wstring begun = L"I [ORLOSDK][IDataset::GetDatasetPermission] Begin - d-1";
inline const std::wstring hasNone = L"I [ORLOSDK][IDataset::GetDatasetPermission] local file has no record dataset token";
inline const std::wstring hasOne = L"I [ORLOSDK][IDataset::GetDatasetPermission] local file has record dataset token";
inline const std::wstring asksToWrite = L"I [ORLOSDK][IDataset::GetDatasetPermission] begin ask for read write permission";
inline const std::wstring asksToRead = L"I [ORLOSDK][IDataset::GetDatasetPermission] begin ask for read only permission";
inline const std::wstring recorded = L"I [ORLOSDK][IDataset::GetDatasetPermission] record token to local file success";
inline const std::wstring endsReadWrite = L"I [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::READ_WRITE";
inline const std::wstring endsReadOnly = L"I [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::READ_ONLY";
inline const std::wstring warnsUnknown = L"W [ORLOSDK][IDataset::GetDatasetPermission] End - EDatasetPermission::UNKNOWN";

} // namespace orlo::test
