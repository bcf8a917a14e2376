#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "platform/XMLReader.h"

namespace xel {

/// Hands the reader from a parent to the handler of an element that has just opened.
///
/// The child sees its own start event first. When it has finished, the parent is the delegate
/// again, `merge(parent, results...)` takes the results, and the child is dropped.
/// @param childField the parent's member that owns the child.
template <typename Child, typename Parent, typename Merge>
void handOff(XMLReader& reader, const std::shared_ptr<Parent>& parent,
             std::shared_ptr<Child> Parent::*childField, std::string_view elementName,
             const XMLAttributes& attributes, Merge merge) {
  const auto child = std::make_shared<Child>();
  (*parent).*childField = child;
  child->parser_didStartElement_namespaceURI_qualifiedName_attributes(reader, elementName, {},
                                                                      elementName, attributes);
  reader.setDelegate(child);
  child->setParsedCallback([reader = reader.shared_from_this(),
                            weakParent = std::weak_ptr<Parent>(parent), childField,
                            merge = std::move(merge)](auto... results) {
    const auto owner = weakParent.lock();
    if (!owner) return;
    reader->setDelegate(owner);
    merge(*owner, std::move(results)...);
    ((*owner).*childField).reset();
  });
}

}  // namespace xel
