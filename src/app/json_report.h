// Machine-readable reports: every JSON document the program writes starts
// with the same two fields and is written the same way.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/json_document.h"
#include "isa/instruction_set.h"

namespace vesk {

// "gfx7" .. "gfx10" for the generation of `instructionSet`.
std::string GenerationName(const InstructionSet& instructionSet);

// A new document holding {"vesk": VERSION, "isa": GENERATION}.
JsonDocument JsonReportHeader(const InstructionSet& instructionSet);

// Writes `document` indented by two blanks with a final line end; arrays and
// objects that fit in 100 columns, and flat elements of arrays (table rows),
// are written on one line.
void WriteJsonDocument(std::ostream& out, const JsonDocument& document);

// Writes one document in the layout of WriteJsonDocument while it is being
// formed, so that a report of millions of rows never exists in memory as a
// whole. Containers are opened and closed in order; members are added as
// small documents (one table row each). A container stays in memory only
// until it is known not to fit on one line; from then on its members are
// formatted as they arrive and the text goes out in pieces of about a
// megabyte.
class JsonStreamWriter {
 public:
  explicit JsonStreamWriter(std::ostream& out) : out_(out) {}

  // Opens the document (the first call) or a member container; `key` names
  // it inside an object and is ignored inside an array.
  void BeginObject(std::string_view key = {});
  void BeginArray(std::string_view key = {});
  // Adds a finished member to the innermost open container.
  // The member is copied only while its container is held in memory, so a
  // table's rows can be formed in one reused document.
  void Add(std::string_view key, const JsonDocument& value);
  void Add(const JsonDocument& value) { Add({}, value); }
  // Closes the innermost container; closing the document writes the rest of
  // it with its final line end.
  void End();

  // Whether part of the document has already left for the stream.
  bool Written() const { return written_; }

 private:
  struct Frame {
    bool object;
    bool inArray;
    size_t indent;
    std::string key;
    // Members held while the container may still fit on one line.
    JsonDocument pending;
    // Members already formatted (the container is laid out on many lines).
    bool expanded = false;
    size_t count = 0;
  };

  void Begin(bool object, std::string_view key);
  // The held members of frame `index` with those of every open container
  // inside it, as one document.
  JsonDocument Held(size_t index) const;
  // Lays out on many lines every held container that can no longer fit on
  // one.
  void ExpandSettled();
  void AppendMember(Frame& frame, const std::string& key, const JsonDocument& value);
  void FlushLarge();

  std::ostream& out_;
  std::vector<Frame> frames_;
  std::string text_;
  bool written_ = false;
};

}  // namespace vesk
