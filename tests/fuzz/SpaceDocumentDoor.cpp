#include "Doors.h"
#include "Silence.h"

#include <BaseCommon/NativeText.h>
#include <OrloProjectManager/Design/SpaceConfig.h>

namespace orlo::fuzz {

namespace {

using web::json::value;

/// The platform's answer that holds this document.
value answerWith(const utility::string_t& document)
{
    value answer = value::object();
    answer[_XPLATSTR("scopeEntityId")] = value::string(_XPLATSTR("p"));
    answer[_XPLATSTR("version")] = value::number(3);
    answer[_XPLATSTR("configValue")] = value::string(document);
    return answer;
}

std::shared_ptr<ISpaceConfig> configOf(const utility::string_t& document)
{
    try {
        return parseSpaceConfig(answerWith(document));
    }
    catch (const std::exception&) { // the frames of the operations catch it
        return nullptr;
    }
}

} // namespace

void spaceDocument(std::string_view bytes)
{
    Silence::install();
    if (!utils::isValidUtf8(bytes))
        return; // refused with the answer that it stands in
    const auto config = configOf(utils::toNative(std::string(bytes)));
    if (!config)
        return;
    require(config->GetVersion() == 3, "the version is that of the answer");
    const std::wstring written = spaceDocumentOf(config.get());
    const auto again = configOf(utils::toNative(written));
    require(again != nullptr, "a document that was written can be read");
    require(again->GetItems().size() == config->GetItems().size(), "no space is lost");
    require(spaceDocumentOf(again.get()) == written, "a document that was read back is written as before");
}

} // namespace orlo::fuzz
