#include "Chapters.h"
#include "LocalFiles.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

namespace session {

using namespace orlo;

namespace {

std::wstring remotePathOf(const std::wstring& message)
{
    JsonWrapper told;
    std::string path;
    return told.Parse(utils::toString(message)) && told.Get("remoteFilePath", path) ? utils::toWstring(path) : message;
}

void upAndDown(Story& story, const std::wstring& folder)
{
    ErrorCode error;
    const std::string bytes = drawingBytes(3 << 20, 1);
    const PromiseData up = IFileManager::UploadFile(makeFile(story, folder, L"总平面图.dwg", bytes), L"", L"", error).get();
    story.expect(up.success, L"the upload failed: " + up.message, error);
    story.say(L"Uploaded 3 MiB to " + remotePathOf(up.message), L"IFileManager::UploadFile");

    const std::wstring copy = FilePath::Combine(folder, L"总平面图 (copy).dwg");
    const PromiseData down = IFileManager::DownloadFile(remotePathOf(up.message), copy, error).get();
    story.expect(down.success && hasBytes(down.message, bytes), L"the file did not come back: " + down.message, error);
    story.say(L"Downloaded it again; the bytes are the same.", L"IFileManager::DownloadFile");
}

std::string publishFile(Story& story, ICollaborationProject& project, const std::wstring& path)
{
    ErrorCode error;
    const ICollaborationFolder& folder = firstFolder(story, project);
    const auto file = ICollaborationFileManager::Get()->UploadFile(folder.GetId(), path, error);
    story.expect(file != nullptr, L"the file could not become a dataset", error);
    story.say(L"A file became a dataset in the folder " + folder.GetName() + L", version " + std::to_wstring(file->GetVersion()) + L", " +
                  std::to_wstring(file->GetLength()) + L" bytes",
              L"ICollaborationFileManager::UploadFile");
    story.expect(IWorkUnit::MarkPublish(file->GetId(), file->GetVersion(), L"第一版", error), L"the version could not be published", error);
    story.say(L"Published that version.", L"IWorkUnit::MarkPublish");
    showFolders(story, project);
    return file->GetId();
}

std::string nameOfBlock(int number)
{
    return "model/block-" + std::to_string(number) + ".bin";
}

/// A dozen blocks of a model, of which the platform hands six out at a time.
void aDozenAtOnce(Story& story, const Platform& platform, const std::string& datasetId)
{
    std::vector<std::string> seeds;
    for (int i = 1; i <= 12; ++i) {
        seeds.push_back(nameOfBlock(i));
        platform.addDatasetFile(datasetId, seeds.back(), drawingBytes(256 << 10, 100 + static_cast<unsigned>(i)));
    }
    ErrorCode error;
    const PromiseData batch = HttpClient::downloadBatchFiles(error, "model", datasetId, seeds, nullptr).get();
    story.expect(batch.success, L"the batch failed: " + batch.message, error);
    const std::wstring cache = FilePath::Combine(utils::getLocalFileCachePath(), utils::toWstring(datasetId));
    for (int i = 1; i <= 12; ++i) {
        const std::wstring path = FilePath::Combine(cache, utils::toWstring(nameOfBlock(i)));
        story.expect(hasBytes(path, drawingBytes(256 << 10, 100 + static_cast<unsigned>(i))), L"a block of the batch differs");
    }
    story.say(L"Downloaded twelve blocks of a model at once; the bytes are the same.", L"HttpClient::downloadBatchFiles");
}

void throughTheCache(Story& story, const std::string& datasetId)
{
    ErrorCode error;
    const std::wstring uri = L"model" + utils::SeparatorChar() + L"block-1.bin?f=1";
    const std::wstring path = IFileManager::DownloadFile(datasetId, uri, error);
    story.expect(!path.empty(), L"the block is not in the cache", error);
    story.say(L"Asked for a block again: it came from the local cache.", L"IFileManager::DownloadFile");
}

} // namespace

void files(Story& story, ICollaborationProject& project, const Platform& platform, const std::wstring& localFolder)
{
    story.chapter(L"Files", __FILE__);
    upAndDown(story, localFolder);
    const std::string datasetId = publishFile(story, project, makeFile(story, localFolder, L"一层平面图.dwg", drawingBytes(1 << 20, 2)));
    if (!platform.isOurOwn())
        return;
    aDozenAtOnce(story, platform, datasetId);
    throughTheCache(story, datasetId);
}

} // namespace session
