#include "xml/ElementWalk.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "xml/TreeAccess.h"

namespace {

using namespace support;
using vx::NamespaceMap;

const BQTree* rootOf(const Value& document) {
  return BQTreeGetFirstChild(document);
}

std::string namespacesOf(const char* document) {
  Value parsed = tree(document);
  NamespaceMap namespaces;
  vx::xmlGetElementNamespaces(rootOf(parsed), &namespaces);
  std::string found;
  for (const char* prefix : {"__defaultNamespace", "p", "Q", "q", "", "a:b"}) {
    const BQString* uri = namespaces.getValue(string(prefix));
    if (uri != nullptr) found += std::string(prefix) + "=" + text(uri) + " ";
  }
  return found;
}

TEST(ElementWalk, CollectsTheDeclarationsOfAnElement) {
  EXPECT_EQ(namespacesOf("<a/>"), "");
  EXPECT_EQ(namespacesOf("<a x='1' xmlns='urn:d' xmlns:p='urn:p' xmlnsq='no' XMLNS:Q='urn:q'/>"),
            "__defaultNamespace=urn:d p=urn:p Q=urn:q ");
  EXPECT_EQ(namespacesOf("<a XmlNs='urn:d' xmlns:='no'/>"), "__defaultNamespace=urn:d ");
  EXPECT_EQ(namespacesOf("<a xmlns='' xmlns:a:b=''/>"), "__defaultNamespace= a:b= ");
  NamespaceMap untouched;
  vx::xmlGetElementNamespaces(nullptr, &untouched);
  EXPECT_EQ(untouched.version(), NamespaceMap().version());
}

/* Writes down the elements that it is called with, and stops at one named "stop". */
struct Visitor {
  std::string* visited;
  const char* row;

  static const BQString* handle(const BQTree* tree, const BQXMLNode* node, NamespaceMap& namespaces,
                                void* context) {
    auto* visitor = static_cast<Visitor*>(context);
    EXPECT_EQ(node, vx::treeGetNode(tree));
    std::string name = text(vx::getElementName(tree));
    *visitor->visited += name + "@" + visitor->row;
    BQTypeRef uri = namespaces.getValue(BQSTR("__defaultNamespace"));
    if (uri != nullptr) *visitor->visited += "(" + text(uri) + ")";
    *visitor->visited += " ";
    return name == "stop" ? BQSTR("stopped") : nullptr;
  }
};

/* What a walk with three rows visits; the message, if any; what is left over. */
std::string walk(const char* document) {
  Value parsed = tree(document);
  NamespaceMap outer;
  outer.addValue(BQSTR("e"), BQSTR("urn:Envelope"));
  uint64_t version = outer.version();
  std::string visited;
  Visitor inEnvelope{&visited, "envelope"}, anywhere{&visited, "any"}, never{&visited, "never"};
  const vx::XMLElementInterrogator table[] = {
      {BQSTR("urn:envelope"), BQSTR("Body"), Visitor::handle, &inEnvelope},
      {nullptr, BQSTR("body"), Visitor::handle, &anywhere},
      {nullptr, BQSTR("Body"), Visitor::handle, &never},
      {nullptr, BQSTR("stop"), Visitor::handle, &anywhere},
      {nullptr, nullptr, Visitor::handle, &never},
  };
  Value unmatched = array({});
  const BQString* message =
      vx::xmlInterrogateElements(rootOf(parsed), outer, table, std::ssize(table), unmatched.as<BQArray>());
  EXPECT_EQ(outer.version(), version) << "what a child declares is taken back";
  if (message != nullptr) visited += text(message) + " ";
  for (BQIndex i = 0; i < BQArrayGetCount(unmatched); ++i) {
    auto* element = static_cast<const BQTree*>(BQArrayGetValueAtIndex(unmatched, i));
    visited += "+" + text(vx::getElementName(element)) + " ";
  }
  return visited;
}

TEST(ElementWalk, HandsEachChildToTheFirstRowThatMatches) {
  const std::pair<const char*, const char*> rows[] = {
      {"<r/>", ""},
      {"<r>text<x/>more<![CDATA[x]]><y/></r>", "+x +y "},
      {"<r><e:Body/></r>", "e:Body@envelope "},
      {"<r><e:BODY/></r>", "e:BODY@envelope "},
      {"<r xmlns='urn:Envelope'><Body/></r>", "Body@any "}, /* the parent's own map is the caller's affair */
      {"<r><Body xmlns='URN:ENVELOPE'/><Body/></r>", "Body@envelope(URN:ENVELOPE) Body@any "},
      {"<r><e:Body xmlns:e='urn:other'/><e:Body/></r>", "e:Body@any e:Body@envelope "},
      {"<r><undeclared:Body/><Bodyx/></r>", "undeclared:Body@any +Bodyx "},
      {"<r><a:b:body/></r>", "+a:b:body "},
      {"<r><x/><stop/><body/><y/></r>", "stop@any stopped +x "},
      {"<r><x><body/></x></r>", "+x "},
  };
  for (auto [document, visited] : rows) EXPECT_EQ(walk(document), visited) << document;
  NamespaceMap none;
  EXPECT_EQ(vx::xmlInterrogateElements(nullptr, none, nullptr, 0, nullptr), nullptr);
}

}  // namespace
