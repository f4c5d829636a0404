// An attribute that owns an ordered list of uniquely named child attributes, found by name, path and
// index. Insertion order is significant (index lookup, file order).
#pragma once

#include "ombrix/model/AttributeContainer.h"
#include "ombrix/model/AttributeEx.h"
#include "ombrix/sdk/SDKInterfaceImpl.h"

#include <vector>

namespace Ombrix::Model
{

class OMBRIX_API CompositeAttribute
    : public AttributeEx<CompositeAttribute, 5, ICompositeAttributeImpl, Attribute>
{
public:
  using Children = std::vector<AttributeContainer<Attribute>>;

  CompositeAttribute() = default;
  explicit CompositeAttribute(CompositeAttribute* parent);
  CompositeAttribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);
  CompositeAttribute(CompositeAttribute&&) = delete;
  ~CompositeAttribute() override;

  // Makes a child of the given kind named `type`; null (tree unchanged) when the name is taken.
  // Throws std::logic_error("Invalid type") for a kind outside 1..11.
  Attribute* createAttribute(KorvanSDK::AttributeType kind, const std::string& type,
                             KorvanSDK::AccessType access);
  // Adopts `child`; null (and `child` destroyed) when a child of that name exists.
  Attribute* addAttribute(std::unique_ptr<Attribute> child);

  // The attribute at `path` below this composite; the empty path is the composite itself. Paths run
  // through composites, entities and (by entity index) links, lists and arrays. Throws
  // std::runtime_error "Invalid path ..." (or a link's std::out_of_range) when nothing is there.
  Attribute& getAttribute(const AttributePath& path, bool flag = false);
  const Attribute& getAttribute(const AttributePath& path, bool flag = false) const;
  // As getAttribute, but null where getAttribute would throw.
  Attribute* findAttribute(const AttributePath& path, bool flag = false);
  const Attribute* findAttribute(const AttributePath& path, bool flag = false) const;
  bool hasAttribute(const AttributePath& path, bool flag = false) const;
  Attribute& operator[](const AttributePath& path) { return getAttribute(path); }
  const Attribute& operator[](const AttributePath& path) const { return getAttribute(path); }

  // Child `index`, or with `recursive` the index-th attribute of the subtree in pre-order.
  // Throws std::out_of_range "No Attribute Found for ... child_i='<index>'".
  Attribute& getAttribute(std::uint64_t index, bool recursive, bool flag = false);
  const Attribute& getAttribute(std::uint64_t index, bool recursive, bool flag = false) const;
  std::uint64_t getNumberOfAttributes(bool recursive, bool flag = false) const;
  bool hasAttributes(bool flag = false) const { return getNumberOfAttributes(false, flag) != 0; }

  // The direct child named `name`, or null (no path parsing; first match in child order).
  Attribute* findChild(const std::string& name) const;

  Children::iterator begin() { return m_children.begin(); }
  Children::iterator end() { return m_children.end(); }
  Children::const_iterator begin() const { return m_children.begin(); }
  Children::const_iterator end() const { return m_children.end(); }
  Children::const_iterator cbegin() const { return m_children.cbegin(); }
  Children::const_iterator cend() const { return m_children.cend(); }
  Children::reverse_iterator rbegin() { return m_children.rbegin(); }
  Children::reverse_iterator rend() { return m_children.rend(); }
  Children::const_reverse_iterator crbegin() const { return m_children.crbegin(); }
  Children::const_reverse_iterator crend() const { return m_children.crend(); }
  std::size_t size() const { return m_children.size(); }

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  // Own fields equal and the children equal pairwise, in order.
  bool isEqual(const CompositeAttribute& other) const;

private:
  template <bool Throw> const Attribute* lookup(const AttributePath& path, bool flag) const;
  [[noreturn]] void throwInvalidPath(const AttributePath& path) const;
  const Attribute* childAtRecursive(std::uint64_t index, bool flag) const;

  Children m_children;
};

// A new default attribute of the class for `kind` (1..11) with `parent` set; std::logic_error
// "Invalid type" otherwise. The text form converts with attributeTypeFromString first.
OMBRIX_API std::unique_ptr<Attribute> createAttribute(KorvanSDK::AttributeType kind,
                                                      CompositeAttribute* parent);
OMBRIX_API std::unique_ptr<Attribute> createAttribute(const std::string& kind, CompositeAttribute* parent);

} // namespace Ombrix::Model
