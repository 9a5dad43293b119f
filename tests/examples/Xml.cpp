#include "Xml.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace orlo::test {

XmlReading::XmlReading(const std::string& document) : m_document(document)
{
    try {
        readDocument();
    }
    catch (const std::runtime_error& fault) {
        m_fault = std::string(fault.what()) + " at byte " + std::to_string(m_place);
    }
}

std::vector<std::string> XmlReading::texts(const std::string& element) const
{
    std::vector<std::string> found;
    for (const Element& each : m_elements)
        if (each.name == element)
            found.push_back(each.text);
    return found;
}

std::vector<std::string> XmlReading::values(const std::string& element, const std::string& attribute) const
{
    std::vector<std::string> found;
    for (const Element& each : m_elements)
        for (const Attribute& one : each.attributes)
            if (each.name == element && one.name == attribute)
                found.push_back(one.value);
    return found;
}

void XmlReading::readDocument()
{
    const auto isForbidden = [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
    };
    if (!utils::isValidUtf8(m_document) || std::any_of(m_document.begin(), m_document.end(), isForbidden))
        throw std::runtime_error("a character that XML doesn't know");
    if (take("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"))
        skipBlanks();
    readStart();
    while (!m_open.empty())
        readContent();
    skipBlanks();
    if (m_place != m_document.size())
        throw std::runtime_error("something behind the root");
}

void XmlReading::readContent()
{
    m_elements[m_open.back()].text += readText("<");
    if (m_document.compare(m_place, 2, "</") == 0)
        readEnd();
    else
        readStart();
}

void XmlReading::readStart()
{
    expect("<");
    Element element{readName(), {}, {}};
    for (skipBlanks(); !take("/>"); skipBlanks()) {
        if (take(">")) {
            m_open.push_back(m_elements.size());
            break;
        }
        Attribute attribute = readAttribute();
        for (const Attribute& earlier : element.attributes)
            if (earlier.name == attribute.name)
                throw std::runtime_error("an attribute twice");
        element.attributes.push_back(std::move(attribute));
    }
    m_elements.push_back(std::move(element));
}

void XmlReading::readEnd()
{
    expect("</");
    if (readName() != m_elements[m_open.back()].name)
        throw std::runtime_error("the end of another element");
    expect(">");
    m_open.pop_back();
}

XmlReading::Attribute XmlReading::readAttribute()
{
    Attribute attribute{readName(), {}};
    expect("=\"");
    attribute.value = readText("\"");
    expect("\"");
    return attribute;
}

std::string XmlReading::readName()
{
    const std::size_t begin = m_place;
    while (m_place < m_document.size() &&
           (std::isalnum(static_cast<unsigned char>(m_document[m_place])) != 0 || m_document[m_place] == '-'))
        ++m_place;
    if (m_place == begin)
        throw std::runtime_error("no name");
    return m_document.substr(begin, m_place - begin);
}

/// With its references resolved.
std::string XmlReading::readText(const char* upTo)
{
    std::string text;
    while (m_place < m_document.size() && m_document[m_place] != *upTo) {
        if (m_document[m_place] == '<')
            throw std::runtime_error("a bare <");
        text += m_document[m_place] == '&' ? readReference() : m_document[m_place++];
    }
    return text;
}

char XmlReading::readReference()
{
    for (const auto& [words, character] : {std::pair{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}})
        if (take(words))
            return character;
    throw std::runtime_error("a bare &");
}

void XmlReading::skipBlanks()
{
    while (m_place < m_document.size() && std::isspace(static_cast<unsigned char>(m_document[m_place])) != 0)
        ++m_place;
}

bool XmlReading::take(const std::string& words)
{
    if (m_document.compare(m_place, words.size(), words) != 0)
        return false;
    m_place += words.size();
    return true;
}

void XmlReading::expect(const std::string& words)
{
    if (!take(words))
        throw std::runtime_error("no " + words);
}

} // namespace orlo::test
