#include "platform/xml/ElementInfoTable.h"

#include <cstring>

#include <BQ/BQArray.h>
#include <BQ/BQDictionary.h>

#include "platform/text/StringImpl.h"

namespace bq {
namespace {

constexpr BQXMLElementInfo kNoAttributes{nullptr, nullptr};

/*
 * The names and values of a few short attributes in one text, each with its NUL. Longer ones are
 * seldom repeated.
 */
class AttributeText {
 public:
  bool append(std::string_view text) {
    if (text.size() >= sizeof text_ - size_) return false;
    std::memcpy(text_ + size_, text.data(), text.size());
    size_ += text.size();
    text_[size_++] = '\0';
    return true;
  }

  std::string_view view() const { return {text_, size_}; }

  size_t hash() const {
    size_t hash = size_;
    for (size_t i = 0; i < size_; ++i) hash = hash * 31 + static_cast<unsigned char>(text_[i]);
    return hash;
  }

 private:
  size_t size_ = 0;
  char text_[256];
};

}  // namespace

struct ElementInfoTable::Shared {
  const BQXMLElementInfo* info;
  std::string_view text;
};

const BQXMLElementInfo* ElementInfoTable::find(Arena& arena, NameTable& names,
                                               std::span<const Attribute> attributes) {
  if (attributes.empty()) return &kNoAttributes;
  AttributeText text;
  for (const Attribute& attribute : attributes) {
    if (!text.append(attribute.name) || !text.append(attribute.value)) return make(arena, names, attributes);
  }
  const Shared*& shared = shared_[text.hash() % kSharedRecords];
  if (shared == nullptr || shared->text != text.view()) {
    auto* copy = static_cast<char*>(arena.allocate(text.view().size()));
    std::memcpy(copy, text.view().data(), text.view().size());
    shared = new (arena.allocate(sizeof(Shared)))
        Shared{make(arena, names, attributes), {copy, text.view().size()}};
  }
  return shared->info;
}

const BQXMLElementInfo* ElementInfoTable::make(Arena& arena, NameTable& names,
                                               std::span<const Attribute> attributes) {
  names_.clear();
  values_.clear();
  for (const Attribute& attribute : attributes) {
    names_.push_back(NameTable::attributeName(arena, names.find(arena, attribute.name)));
    values_.push_back(makeString(attribute.value));
  }
  auto pairs = static_cast<BQIndex>(attributes.size());
  auto* info = new (arena.allocate(sizeof(BQXMLElementInfo))) BQXMLElementInfo{
      BQDictionaryCreate(names_.data(), values_.data(), pairs), BQArrayCreate(names_.data(), pairs)};
  arena.keep(info->attributes);
  arena.keep(info->attributeOrder);
  for (const void* value : values_) BQRelease(value);
  return info;
}

void ElementInfoTable::clear() {
  shared_.fill(nullptr);
  names_ = {};
  values_ = {};
}

}  // namespace bq
