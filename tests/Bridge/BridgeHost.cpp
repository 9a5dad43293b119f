// A host which doesn't link the library, and knows of it what a sibling library knows: the bridge.
//
//   BridgeHost PLUGIN LIBRARY ROOT URL COMMAND...
//
//   load, unload   the plugin, which links the library
//   look           tells whether the bridge is there, and whether the library is loaded
//   set-up         see the plugin, as for the next three
//   projects, download, job
//   meta           asks for the metadata of a version by the bridge, and keeps the ErrorCode
//   refused        asks for something that the library itself refuses, and keeps the ErrorCode
//   error          tells what that ErrorCode holds, and clears it
//   wait           for a line of the input

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/Text.h>

#include <cstdlib>
#include <dlfcn.h>
#include <functional>
#include <iostream>
#include <map>
#include <string>

/// The tables that a library makes for good are left behind when it is unloaded, and nothing points to them any more.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "detect_leaks=0";
}

namespace {

class Plugin
{
public:
    explicit Plugin(const char* file) : m_file(file) {}

    void load()
    {
        m_handle = dlopen(m_file, RTLD_NOW | RTLD_LOCAL);
        if (!m_handle)
            fail(dlerror());
    }
    void unload()
    {
        if (dlclose(m_handle) != 0)
            fail(dlerror());
    }
    template <class Entry>
    Entry entry(const char* name) const
    {
        void* const found = dlsym(m_handle, name);
        if (!found)
            fail(dlerror());
        return reinterpret_cast<Entry>(found);
    }

private:
    [[noreturn]] static void fail(const char* reason)
    {
        std::cout << reason << std::endl;
        std::exit(3);
    }

    const char* m_file;
    void* m_handle = nullptr;
};

bool isLoaded(const char* library)
{
    void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 6)
        return 2;
    using orlo::IOrloBridge;
    Plugin plugin(argv[1]);
    const std::string root = argv[3];
    orlo::ErrorCode error;
    const std::map<std::string, std::function<void()>> commands{
        {"load", [&] { plugin.load(); }},
        {"unload", [&] { plugin.unload(); }},
        {"look",
         [&] {
             std::cout << (IOrloBridge::m_pBridge ? "bridge" : "no bridge") << ", " << (isLoaded(argv[2]) ? "loaded" : "not loaded")
                       << std::endl;
         }},
        {"set-up", [&] { plugin.entry<void (*)(const char*, const char*)>("setUp")(root.c_str(), argv[4]); }},
        {"projects", [&] { std::cout << plugin.entry<std::size_t (*)()>("countProjects")() << " projects" << std::endl; }},
        {"download", [&] { plugin.entry<void (*)(const char*)>("startDownload")((root + "/here").c_str()); }},
        {"job", [&] { std::cout << plugin.entry<bool (*)(const char*)>("startJob")((root + "/drawing").c_str()) << std::endl; }},
        {"meta",
         [&] {
             const std::wstring value = IOrloBridge::m_pBridge->GetDatasetMeta(error, orlo::DatasetMetaKey::AxisGridVersions, L"version-1");
             std::cout << '"' << orlo::utils::toString(value) << '"' << std::endl;
         }},
        {"refused", [&] { IOrloBridge::m_pBridge->GetFamilyFileUrl(error, L"", L"", L""); }},
        {"error",
         [&] {
             std::cout << error.GetValue() << ' ' << orlo::utils::toString(error.GetErrorMessage()) << std::endl;
             error.Clear();
         }},
        {"wait",
         [] {
             std::string line;
             std::getline(std::cin, line);
         }},
    };
    for (int i = 5; i < argc; ++i)
        commands.at(argv[i])();
}
