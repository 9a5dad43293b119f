#pragma once

#include <string>
#include <vector>

namespace orlo::test {

/// Reads an XML document as far as pictures need it: a declaration, elements with attributes, text. Comments and the like count as faults.
class XmlReading
{
public:
    explicit XmlReading(const std::string& document);

    /// What keeps the document from being well-formed, and where; empty if nothing does.
    const std::string& fault() const { return m_fault; }
    /// The texts of the elements of a name, in their order.
    std::vector<std::string> texts(const std::string& element) const;
    /// The values of an attribute of the elements of a name, in their order.
    std::vector<std::string> values(const std::string& element, const std::string& attribute) const;

private:
    struct Attribute
    {
        std::string name;
        std::string value;
    };
    struct Element
    {
        std::string name;
        std::vector<Attribute> attributes;
        std::string text;
    };

    void readDocument();
    void readContent();
    void readStart();
    void readEnd();
    Attribute readAttribute();
    std::string readName();
    std::string readText(const char* upTo);
    char readReference();
    void skipBlanks();
    bool take(const std::string& words);
    void expect(const std::string& words);

    std::string m_document;
    std::size_t m_place = 0;
    std::string m_fault;
    std::vector<Element> m_elements;
    std::vector<std::size_t> m_open;
};

} // namespace orlo::test
