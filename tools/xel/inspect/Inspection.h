#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/ClientView.h"
#include "inspect/Finding.h"

namespace xel::inspect {

enum class DocumentKind { answer, streamInfo, vast, trace };

/// What a document is, what the client makes of it, and what is to be said about it.
struct Inspection {
  /// A document that came within a trace.
  struct Part;
  struct Counts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notes = 0;
  };

  DocumentKind kind = DocumentKind::streamInfo;
  ClientView view;
  /// By families of rules, within one in document order.
  std::vector<Finding> findings;
  /// Of a trace: its documents, each once, in the order in which they came.
  std::vector<Part> parts;

  /// Of its findings and those of its parts.
  Counts counts() const;
};

struct Inspection::Part {
  /// The first line of the trace that brings the document.
  std::size_t line;
  /// How many lines bring it.
  std::size_t times;
  std::string url;
  Inspection inspection;
};

/// Inspects a text, whichever of the four kinds it is. Installs platforms of its own while it runs.
///
/// Throws std::runtime_error with one line when the text is of none.
Inspection inspect(std::string_view text, const ClientFacts& facts = {});

}  // namespace xel::inspect
