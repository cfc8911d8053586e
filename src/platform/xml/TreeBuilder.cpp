#include "platform/xml/TreeBuilder.h"

#include <cstring>

#include <algorithm>

#include "platform/text/StringImpl.h"

namespace bq {
namespace {

bool isBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; });
}

}  // namespace

void TreeBuilder::begin(Arena& arena, bool keepsLeafText) {
  arena_ = &arena;
  keepsLeafText_ = keepsLeafText;
  treeTypeID_ = BQTreeGetTypeID();
  nodeTypeID_ = BQXMLNodeGetTypeID();
  textLength_ = 0;
  textIsBlank_ = true;
  keepsBlanksAfter_ = false;
  depth_ = 0;
  BQTree* document = nullptr;
  levels_[0].nextChild = &document;
  append(kBQXMLNodeTypeDocument, BQSTR(""), nullptr);
  levels_[0] = {document, &document->firstChild};
}

bool TreeBuilder::startElement(const BQString* name, const BQXMLElementInfo* info) {
  if (depth_ == kMaximumElementDepth) return false;
  finishText(false);
  BQTree* element = append(kBQXMLNodeTypeElement, name, info);
  levels_[++depth_] = {element, &element->firstChild};
  return true;
}

void TreeBuilder::endElement() {
  const Level& level = levels_[depth_];
  finishText(keepsLeafText_ && level.nextChild == &level.position->firstChild);
  keepsBlanksAfter_ = false;
  --depth_;
}

void TreeBuilder::appendText(std::string_view text) {
  if (text.size() > text_.size() - textLength_) text_.resize((textLength_ + text.size()) * 2);
  std::memcpy(text_.data() + textLength_, text.data(), text.size());
  textLength_ += text.size();
  textIsBlank_ = textIsBlank_ && isBlank(text);
}

void TreeBuilder::startCDATASection() {
  finishText(keepsLeafText_);
}

void TreeBuilder::endCDATASection() {
  appendTextNode(kBQXMLNodeTypeCDATASection);
}

void TreeBuilder::entityReference(const BQString* name) {
  finishText(true);
  append(kBQXMLNodeTypeEntityReference, name, nullptr);
}

void TreeBuilder::shrink() {
  text_ = {};
}

BQTree* TreeBuilder::append(BQXMLNodeTypeCode type, const BQString* string, const BQXMLElementInfo* info) {
  BQRuntimeBase treeBase{static_cast<uint16_t>(treeTypeID_), kInArena, 1};
  BQRuntimeBase nodeBase{static_cast<uint16_t>(nodeTypeID_), nodeFlags(type), 1};
  auto* tree =
      new (arena_->allocate(sizeof(BQTree))) BQTree{treeBase, nullptr, nullptr, {nodeBase, string, info}};
  Level& level = levels_[depth_];
  *level.nextChild = tree;
  level.nextChild = &tree->nextSibling;
  return tree;
}

void TreeBuilder::appendTextNode(BQXMLNodeTypeCode type) {
  const BQString* string = textLength_ == 0 ? BQSTR("") : makeArenaString(*arena_, text_.data(), textLength_);
  append(type, string, nullptr);
  textLength_ = 0;
  textIsBlank_ = true;
}

void TreeBuilder::finishText(bool keepsBlanks) {
  if (textLength_ != 0) {
    if (!textIsBlank_ || keepsBlanks || keepsBlanksAfter_) appendTextNode(kBQXMLNodeTypeText);
    textLength_ = 0;
    textIsBlank_ = true;
  }
  keepsBlanksAfter_ = keepsBlanks;
}

}  // namespace bq
