#include "src/macros/xml_document.h"

#include "src/log/procedure.h"
#include "src/macros/harmless_xml.h"
#include "src/text/text.h"

#include <memory>

using Microsoft::WRL::ComPtr;

namespace xml {
namespace {

// In the headers, but in no library that the compiler comes with.
constexpr IID kDocument2 = {
    0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

struct FreeString {
    void operator()(BSTR text) const { ::SysFreeString(text); }
};
using String = std::unique_ptr<OLECHAR, FreeString>;

String toString(const std::wstring& text) {
    String made{::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))};
    if (!made) throw std::bad_alloc{};
    return made;
}

[[noreturn]] void throwObjectNotSet() {
    throw RuntimeError{RuntimeError::kObjectNotSet,
                       u"Object variable or With block variable not set"};
}

void require(HRESULT result, const char16_t* refused) {
    if (FAILED(result)) throw RuntimeError{static_cast<std::int32_t>(result), refused};
}

std::vector<Node> nodesOf(IXMLDOMNodeList* list) {
    std::vector<Node> nodes;
    if (list == nullptr) return nodes;
    for (;;) {
        ComPtr<IXMLDOMNode> node;
        require(list->nextNode(&node), u"The list of nodes could not be read");
        if (!node) return nodes;
        nodes.emplace_back(std::move(node));
    }
}

void setFlag(IXMLDOMDocument2& document, const wchar_t* property) {
    VARIANT on{};
    on.vt = VT_BOOL;
    on.boolVal = VARIANT_TRUE;
    // Parsers that do not know the property have no use for it.
    document.setProperty(toString(property).get(), on);
}

/// Of the two path languages, XPath is the one in which a faulty path is an error everywhere.
void setPathLanguage(IXMLDOMDocument2& document) {
    const String language = toString(L"XPath");
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = language.get();
    require(document.setProperty(toString(L"SelectionLanguage").get(), value),
            u"The parser has no XPath");
}

}  // namespace

// --- Node ---

IXMLDOMNode& Node::node() const {
    if (!node_) throwObjectNotSet();
    return *node_.Get();
}

ComPtr<IXMLDOMNode> Node::findAttribute(const wchar_t* name) const {
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    require(node().get_attributes(&attributes), u"The attributes could not be read");
    ComPtr<IXMLDOMNode> found;
    if (attributes) {
        require(attributes->getNamedItem(toString(name).get(), &found),
                u"The attribute could not be read");
    }
    return found;
}

bool Node::hasAttribute(const wchar_t* name) const { return findAttribute(name) != nullptr; }

std::wstring Node::attribute(const wchar_t* name) const { return Node{findAttribute(name)}.text(); }

std::wstring Node::text() const {
    BSTR text = nullptr;
    require(node().get_text(&text), u"The text could not be read");
    const String owner{text};
    return text == nullptr ? std::wstring{} : std::wstring{text, ::SysStringLen(text)};
}

std::vector<Node> Node::select(const std::wstring& path) const {
    ComPtr<IXMLDOMNodeList> list;
    require(node().selectNodes(toString(path).get(), &list), u"The path is not valid");
    return nodesOf(list.Get());
}

Node Node::find(const std::wstring& path) const {
    ComPtr<IXMLDOMNode> found;
    require(node().selectSingleNode(toString(path).get(), &found), u"The path is not valid");
    return Node{found};
}

Node Node::first(const std::wstring& path) const {
    Node found = find(path);
    found.node();
    return found;
}

void Node::append(const Node& child) const {
    ComPtr<IXMLDOMNode> appended;
    require(node().appendChild(&child.node(), &appended), u"The node could not be appended");
}

// --- Document ---

Document::Document() {
    CLSID parser{};
    require(::CLSIDFromProgID(L"MSXML2.DOMDocument", &parser), u"The XML parser is not installed");
    require(::CoCreateInstance(parser, nullptr, CLSCTX_INPROC_SERVER, kDocument2,
                               reinterpret_cast<void**>(document_.GetAddressOf())),
            u"The XML parser could not be started");
    document_->put_async(VARIANT_FALSE);
    document_->put_resolveExternals(VARIANT_FALSE);
    document_->put_validateOnParse(VARIANT_FALSE);
    setFlag(*document_.Get(), L"ProhibitDTD");
    setPathLanguage(*document_.Get());
}

void Document::load(const std::wstring& text) {
    macros::requireHarmlessXml(fromWide(text));
    VARIANT_BOOL wellFormed = VARIANT_FALSE;
    require(document_->loadXML(toString(text).get(), &wellFormed), u"The text could not be parsed");
}

Node Document::addRoot(const wchar_t* name) {
    ComPtr<IXMLDOMElement> element;
    require(document_->createElement(toString(name).get(), &element),
            u"The element could not be made");
    Node root{element};
    asNode().append(root);
    return root;
}

Node Document::asNode() const { return Node{document_}; }

std::vector<Node> Document::elements(const wchar_t* name) const {
    ComPtr<IXMLDOMNodeList> list;
    require(document_->getElementsByTagName(toString(name).get(), &list),
            u"The elements could not be listed");
    return nodesOf(list.Get());
}

}  // namespace xml
