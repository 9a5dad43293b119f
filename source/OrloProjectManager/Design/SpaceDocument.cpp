// Writing of a space tree. The writer streams and keeps its own stack of open nodes, so that a tree of any depth can be
// written on a small stack.

#include "../NetworkProject/Design/ConfigTexts.h"
#include "SpaceConfig.h"

#include <BaseCommon/Text.h>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <stdexcept>
#include <unordered_set>

namespace orlo {

namespace {

class SpaceDocument
{
public:
    std::string write(const ISpaceConfig& config)
    {
        m_writer.StartObject();
        text("appKey", L"BIM-MODEL");
        m_writer.Key("data");
        m_writer.StartArray();
        for (const auto& root : config.GetItems())
            writeTree(root.get());
        m_writer.EndArray();
        text("schemaKey", L"SpaceConfig");
        m_writer.Key("schemaVersion");
        m_writer.Int(1);
        m_writer.EndObject();
        return {m_buffer.GetString(), m_buffer.GetSize()};
    }

private:
    struct OpenNode
    {
        const ISpaceConfigItem* node;
        std::size_t nextChild;
    };

    void writeTree(const ISpaceConfigItem* root)
    {
        std::vector<OpenNode> path;
        open(root, path);
        while (!path.empty()) {
            OpenNode& current = path.back();
            const auto& children = current.node->GetSubSpaces();
            if (current.nextChild < children.size()) {
                const ISpaceConfigItem* const child = children[current.nextChild++].get();
                open(child, path);
            }
            else {
                m_onPath.erase(current.node);
                path.pop_back();
                closeChildren();
            }
        }
    }

    /// Writes a leaf whole; of a node with children all that stands before them.
    void open(const ISpaceConfigItem* node, std::vector<OpenNode>& path)
    {
        if (!node)
            throw std::invalid_argument("a node of the space tree is null");
        m_writer.StartObject();
        if (node->GetSubSpaces().empty()) {
            writeLevels(*node);
            writeFields(*node);
            m_writer.EndObject();
            return;
        }
        if (!m_onPath.insert(node).second)
            throw std::invalid_argument("a node of the space tree contains itself");
        writeFields(*node);
        m_writer.Key("subSpaces");
        m_writer.StartArray();
        path.push_back({node, 0});
    }

    void closeChildren()
    {
        m_writer.EndArray();
        m_writer.EndObject();
    }

    void writeLevels(const ISpaceConfigItem& node)
    {
        m_writer.Key("attachValues");
        m_writer.StartObject();
        text("ArchitectureLevel", node.GetArchitectureLevel());
        text("StructureLevel", node.GetStructureLevel());
        m_writer.EndObject();
    }

    void writeFields(const ISpaceConfigItem& node)
    {
        text("id", node.GetId());
        text("spaceDescription", node.GetDescription());
        text("spaceName", node.GetName());
        text("spaceType", spaceTypeTexts().textOf(node.GetType()));
    }

    void text(const char* key, const std::wstring& value)
    {
        const std::string utf8 = utils::toString(value);
        m_writer.Key(key);
        m_writer.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
    }

    rapidjson::StringBuffer m_buffer;
    rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
    std::unordered_set<const ISpaceConfigItem*> m_onPath;
};

} // namespace

std::wstring spaceDocumentOf(const ISpaceConfig* config)
{
    if (!config)
        throw std::invalid_argument("the space configuration is null");
    return utils::toWstring(SpaceDocument().write(*config));
}

} // namespace orlo
