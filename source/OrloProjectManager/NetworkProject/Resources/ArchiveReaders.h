#pragma once

#include <OrloProjectManager/Resources/IArchivePackage.h>

#include <cpprest/json.h>

// Each begins with an empty record. Code and words are read from any body; the list is filled where the code is the integer 10000 and
// "data" has the right shape.   Returns: false for null only.
namespace orlo::OrloPayloadProcessor {

bool readArchivePackages(const web::json::value& body, http::ORLOHTTPPayloadArchivePackageAck& ack);
bool readArchivePackageVersions(const web::json::value& body, http::ORLOHTTPPayloadArchivePackageVersionAck& ack);
bool readArchiveUnitVersions(const web::json::value& body, http::ORLOHTTPPayloadArchiveUnitVersionAck& ack);
bool readArchiveStandardCodes(const web::json::value& body, http::ORLOHTTPPayloadArchiveUnitStandardCodeAck& ack);

} // namespace orlo::OrloPayloadProcessor
