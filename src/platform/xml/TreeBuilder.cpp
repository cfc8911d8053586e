#include "platform/xml/TreeBuilder.h"

#include <algorithm>
#include <utility>

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
  clearText();
  keepsBlanksAfter_ = false;
  depth_ = 0;
  levels_[0] = {make<Parent>(kBQXMLNodeTypeDocument, 0, BQSTR("")), nullptr};
}

bool TreeBuilder::startElement(const BQString* name, const AttributeList* attributes) {
  if (depth_ == kMaximumElementDepth) return false;
  finishText(false);
  Parent* element = nullptr;
  if (attributes == nullptr) {
    element = make<Parent>(kBQXMLNodeTypeElement, 0, name);
  } else {
    auto* position = make<ParentWithAttributes>(kBQXMLNodeTypeElement, kHasAttributes, name);
    position->attributes = attributes;
    element = position;
  }
  append(element);
  levels_[++depth_] = {element, nullptr};
  return true;
}

void TreeBuilder::endElement() {
  finishText(keepsLeafText_ && levels_[depth_].lastChild == nullptr);
  keepsBlanksAfter_ = false;
  --depth_;
}

void TreeBuilder::appendText(std::string_view text) {
  text_ += std::exchange(lastingText_, {});
  text_ += text;
  textIsBlank_ = textIsBlank_ && isBlank(text);
}

void TreeBuilder::appendLastingText(std::string_view text) {
  if (!this->text().empty()) return appendText(text);
  lastingText_ = text;
  textIsBlank_ = isBlank(text);
}

void TreeBuilder::startCDATASection() {
  finishText(keepsLeafText_);
}

void TreeBuilder::endCDATASection() {
  appendTextNode(kBQXMLNodeTypeCDATASection);
}

void TreeBuilder::entityReference(const BQString* name) {
  finishText(true);
  append(make<BQTree>(kBQXMLNodeTypeEntityReference, 0, name));
}

void TreeBuilder::shrink() {
  text_ = std::string();
}

template <class Position>
Position* TreeBuilder::make(BQXMLNodeTypeCode type, uint16_t flags, const BQString* string) {
  auto* position = new (arena_->allocate(sizeof(Position))) Position();
  position->base = {static_cast<uint16_t>(treeTypeID_), kInArena, BQTree::kNoFollower};
  auto nodeFlags = static_cast<uint16_t>(kInArena | flags | type << kNodeTypeShift);
  position->node.base = {static_cast<uint16_t>(nodeTypeID_), nodeFlags, 0};
  position->node.string = string;
  return position;
}

void TreeBuilder::append(BQTree* position) {
  Level& level = levels_[depth_];
  if (level.lastChild == nullptr) {
    level.position->setFollower(position);
  } else if (const Parent* parent = asParent(level.lastChild)) {
    const_cast<Parent*>(parent)->nextSibling = position;
  } else {
    level.lastChild->setFollower(position);
  }
  level.lastChild = position;
}

void TreeBuilder::appendTextNode(BQXMLNodeTypeCode type) {
  std::string_view text = this->text();
  if (text.size() > sizeof(BQXMLNode::characters)) {
    append(make<BQTree>(type, 0, makeArenaString(*arena_, text.data(), text.size())));
  } else {
    auto* position = make<BQTree>(type, kShortText, nullptr);
    position->node.base.retainCount = static_cast<uint32_t>(text.size());
    text.copy(position->node.characters, text.size());
    append(position);
  }
  clearText();
}

void TreeBuilder::clearText() {
  text_.clear();
  lastingText_ = {};
  textIsBlank_ = true;
}

void TreeBuilder::finishText(bool keepsBlanks) {
  if (!text().empty()) {
    if (!textIsBlank_ || keepsBlanks || keepsBlanksAfter_) appendTextNode(kBQXMLNodeTypeText);
    clearText();
  }
  keepsBlanksAfter_ = keepsBlanks;
}

}  // namespace bq
