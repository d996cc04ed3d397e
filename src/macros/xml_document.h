// An XML document of the system's parser, as far as macro traces need it.
//
//   xml::Document document;
//   document.load(L"<GA NAME='Calls'><TRACE NAME='Incoming'/></GA>");
//   for (const xml::Node& group : document.elements(L"GA")) use(group.attribute(L"NAME"));
//
// Nodes keep their document alive. A missing node is reported as RuntimeError{91}, an error of the
// parser as RuntimeError with the parser's number. The user-interface thread, after COM has been
// initialised.
#pragma once

#include <windows.h>
#include <msxml2.h>
#include <wrl/client.h>

#include <string>
#include <vector>

namespace xml {

class Node {
public:
    Node() = default;
    explicit Node(Microsoft::WRL::ComPtr<IXMLDOMNode> node) : node_{std::move(node)} {}

    /// Whether there is a node; all other members throw if there is none.
    bool exists() const { return node_ != nullptr; }

    bool hasAttribute(const wchar_t* name) const;
    /// Throws if the element has no such attribute.
    std::wstring attribute(const wchar_t* name) const;

    /// The text of the node and all nodes below it.
    std::wstring text() const;

    /// Elements below this one that match a path, in document order.
    std::vector<Node> select(const std::wstring& path) const;
    /// The first of them. Throws if there is none.
    Node first(const std::wstring& path) const;
    /// As first, but a non-existent node if there is none.
    Node find(const std::wstring& path) const;

    /// Appends a node as the last child, moving it from its old position, even from another
    /// document.
    void append(const Node& child) const;

private:
    friend class Document;

    IXMLDOMNode& node() const;
    Microsoft::WRL::ComPtr<IXMLDOMNode> findAttribute(const wchar_t* name) const;

    Microsoft::WRL::ComPtr<IXMLDOMNode> node_;
};

class Document {
public:
    /// An empty document.
    Document();

    /// Replaces the content. The document is empty if the text is not XML.
    /// Throws RuntimeError for a harmful text; the content is then unchanged.
    void load(const std::wstring& text);

    /// Creates an element and appends it to the document.
    Node addRoot(const wchar_t* name);

    /// The document itself as a node, for paths that begin with the root element.
    Node asNode() const;

    /// Every element of the name, in the order of the document.
    std::vector<Node> elements(const wchar_t* name) const;

private:
    Microsoft::WRL::ComPtr<IXMLDOMDocument2> document_;
};

}  // namespace xml
