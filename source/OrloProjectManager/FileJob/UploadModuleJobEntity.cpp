#include "UploadModuleJobEntity.h"

#include "JobFields.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/IOrloEventManager.h>
#include <BaseCommon/Text.h>

namespace orlo {

const char* const UploadModuleJobEntity::jobTypeKey = "0F9C4B72 - B885 - BCD8 - 7F1F - 7BE3E9D17403";

namespace {

const JobEntityRegistration moduleJobRegistration(UploadModuleJobEntity::jobTypeKey,
                                                  [] { return std::make_shared<UploadModuleJobEntity>(); });

constexpr int moduleUploaded = 4;

} // namespace

UploadModuleJobEntity::UploadModuleJobEntity() : UploadJobEntity(JobType::UploadModule)
{}

UploadModuleJobEntity::UploadModuleJobEntity(std::wstring moduleId, std::wstring folderId, std::wstring spaceType,
                                             std::string spaceTypeParameter, std::wstring resourceType, std::wstring categoryId,
                                             std::wstring specialty, std::wstring localFilePath, std::wstring fileName)
    : UploadJobEntity(JobType::UploadModule, std::move(folderId), std::move(localFilePath), std::move(fileName)),
      m_moduleId(std::move(moduleId)),
      m_spaceType(std::move(spaceType)),
      m_spaceTypeParameter(std::move(spaceTypeParameter)),
      m_resourceType(std::move(resourceType)),
      m_categoryId(std::move(categoryId)),
      m_specialty(std::move(specialty))
{}

UploadModuleJobEntity::~UploadModuleJobEntity() = default;

bool UploadModuleJobEntity::IsCanRun(const List& running, const List& waiting)
{
    for (const auto& job : running) {
        const auto module = std::dynamic_pointer_cast<UploadModuleJobEntity>(job);
        if (module && module->m_moduleId == m_moduleId)
            return false;
    }
    std::shared_ptr<UploadModuleJobEntity> newest;
    for (const auto& job : waiting) {
        const auto module = std::dynamic_pointer_cast<UploadModuleJobEntity>(job);
        if (module && (!newest || newest->GetCreateTime() < module->GetCreateTime()))
            newest = module;
    }
    if (newest)
        m_priorityJob = newest;
    return true;
}

std::string UploadModuleJobEntity::GetJobTypeKey() const
{
    return jobTypeKey;
}

template <class Self, class Visit>
void UploadModuleJobEntity::eachField(Self& self, const Visit& visit)
{
    visit("createTime", self.m_jobCreateTime, L"parse cloudify m_jobCreateTime failed.");
    visit("moduleId", self.m_moduleId, L"parse cloudify m_moduleId failed.");
    visit("spaceType", self.m_spaceType, L"parse cloudify m_spaceType failed.");
    visit("spaceTypeParameter", self.m_spaceTypeParameter, L"parse cloudify m_spaceTypeParameter failed.");
    visit("resourceType", self.m_resourceType, L"parse cloudify m_resourceType failed.");
    visit("categoryId", self.m_categoryId, L"parse cloudify m_categoryId failed.");
    visit("fileName", self.m_fileName, L"parse cloudify m_fileName failed.");
    visit("folderId", self.m_folderId, L"parse cloudify m_folderId failed.");
    visit("localFilePath", self.m_localFilePath, L"parse cloudify m_localFilePath failed.");
    visit("specialty", self.m_specialty, L"parse cloudify m_specialty failed.");
}

bool UploadModuleJobEntity::fromJsonForCloudify(const JsonWrapper& document)
{
    JobFieldReader reader(document, ORLO_HERE("orlo::UploadModuleJobEntity::fromJsonForCloudify"));
    eachField(*this, [&](const char* key, auto& field, const wchar_t* words) { reader.read(key, field, words); });
    return reader.good();
}

std::string UploadModuleJobEntity::ToJson() const
{
    JobFields fields;
    eachField(*this, [&](const char* key, const auto& field, const wchar_t*) { fields.add(key, field); });
    return fields.toJson(JobId());
}

bool UploadModuleJobEntity::operator<(const IJobEntity& other) const
{
    return isCreatedBefore(*this, other, ORLO_HERE("orlo::UploadModuleJobEntity::operator <"));
}

IModuleUploads* UploadModuleJobEntity::moduleManager() const
{
    return dynamic_cast<IModuleUploads*>(IModuleManager::Get());
}

bool UploadModuleJobEntity::upload(ErrorCode& error)
{
    IModuleUploads* const modules = moduleManager();
    return modules ? uploadModule(*modules, error) : missing(L"UploadModuleJobEntity", L"IModuleManager is null");
}

bool UploadModuleJobEntity::uploadModule(IModuleUploads& modules, ErrorCode& error)
{
    const std::wstring space = utils::toWstring(m_spaceTypeParameter);
    const std::wstring md5 = utils::toWstring(utils::md5(m_localFilePath));
    const std::wstring name = m_fileName.empty() ? FilePath(m_localFilePath).GetFileNameWithoutExtension() : m_fileName;
    const auto file = modules.UploadModule(m_spaceType, space, m_resourceType, m_localFilePath, name, md5, false, error);
    if (!file)
        return fail(error);
    const NewModule module{m_specialty, m_categoryId, m_resourceType, file->GetFileKey(), md5, name, file->GetUrl()};
    if (!modules.AddModuleToProject(m_spaceType, space, module, m_resource, error))
        return fail(error);
    return succeed(L"Upload Module success");
}

void UploadModuleJobEntity::announce() const
{
    if (IOrloEventManager* const events = IOrloEventManager::Get())
        events->PostEvent(moduleUploaded, L"module_" + m_moduleId + L"_" + utils::toWstring(m_resource));
}

} // namespace orlo
