#pragma once

#include <OrloProjectManager/Projects/ICollaborationFolder.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo::test {

using Folders = std::vector<std::shared_ptr<ICollaborationFolder>>;

/// The ids of small trees in one line: "a{b{c} d} e". A folder without an id shows as "-", no folder as "null".
std::wstring drawn(const Folders& roots);
std::wstring drawn(const std::vector<ICollaborationFolder*>& roots);

/// The ids in their order.
std::vector<std::string> datasetIds(const ICollaborationFolder& folder);

} // namespace orlo::test
