// The common header of the JSON reports and their writer.
#include "app/json_report.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "app/version.h"

namespace vesk {

std::string GenerationName(const InstructionSet& instructionSet) {
  return "gfx" + std::to_string(instructionSet.GetVersion() >> 16);
}

JsonDocument JsonReportHeader(const InstructionSet& instructionSet) {
  JsonDocument document = JsonDocument::object();
  document["vesk"] = VESK_VERSION;
  document["isa"] = GenerationName(instructionSet);
  return document;
}

namespace {

// Containers whose one-line form fits in this many columns stay on one line.
constexpr size_t kLineWidth = 100;

// A string that needs no escaping: printable ASCII without quote or
// backslash.
bool IsPlain(std::string_view text) {
  for (const char c : text) {
    if (c < 0x20 || c > 0x7e || c == '"' || c == '\\') return false;
  }
  return true;
}

void AppendString(std::string& out, std::string_view text) {
  if (IsPlain(text)) {
    out += '"';
    out += text;
    out += '"';
    return;
  }
  // Invalid UTF-8 in listing text (instruction or function names) is
  // replaced rather than ending the run with an exception.
  out += JsonDocument(std::string(text))
             .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// Integers, strings, booleans and null are written directly (reports hold
// millions of them); other numbers as the library writes them.
void AppendScalar(std::string& out, const JsonDocument& value) {
  char digits[24];
  switch (value.type()) {
    case nlohmann::json::value_t::number_integer:
      out.append(digits, std::to_chars(digits, digits + sizeof digits, value.get<int64_t>()).ptr);
      return;
    case nlohmann::json::value_t::number_unsigned:
      out.append(digits, std::to_chars(digits, digits + sizeof digits, value.get<uint64_t>()).ptr);
      return;
    case nlohmann::json::value_t::string:
      AppendString(out, value.get_ref<const std::string&>());
      return;
    case nlohmann::json::value_t::boolean:
      out += value.get<bool>() ? "true" : "false";
      return;
    case nlohmann::json::value_t::null:
      out += "null";
      return;
    default:
      out += value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  }
}

// `value` on one line, with a blank after each colon and comma.
void AppendInline(std::string& out, const JsonDocument& value) {
  if (!value.is_structured()) {
    AppendScalar(out, value);
    return;
  }
  const bool object = value.is_object();
  out += object ? '{' : '[';
  for (auto it = value.begin(); it != value.end(); ++it) {
    if (it != value.begin()) out += ", ";
    if (object) {
      AppendString(out, it.key());
      out += ": ";
    }
    AppendInline(out, *it);
  }
  out += object ? '}' : ']';
}

// Only scalars and arrays of scalars: a table row or a register list.
bool IsFlat(const JsonDocument& value) {
  for (const JsonDocument& member : value) {
    if (member.is_object()) return false;
    if (member.is_array()) {
      for (const JsonDocument& inner : member) {
        if (inner.is_structured()) return false;
      }
    }
  }
  return true;
}

// Appends `value` indented by `indent` blanks, one member per line, except
// that a container is written on one line when it fits in the line width or
// when it is a flat member of an array (so that long reports read one
// instruction per line).
void AppendJson(std::string& out, const JsonDocument& value, size_t indent, bool inArray) {
  if (!value.is_structured() || value.empty()) {
    AppendInline(out, value);
    return;
  }
  if (inArray && IsFlat(value)) {
    AppendInline(out, value);
    return;
  }
  // A container of n members needs at least 2n + 1 columns.
  if (2 * value.size() + 1 + indent <= kLineWidth) {
    std::string line;
    AppendInline(line, value);
    if (line.size() + indent <= kLineWidth) {
      out += line;
      return;
    }
  }
  const bool object = value.is_object();
  out += object ? '{' : '[';
  for (auto it = value.begin(); it != value.end(); ++it) {
    out += it == value.begin() ? "\n" : ",\n";
    out.append(indent + 2, ' ');
    if (object) {
      AppendString(out, it.key());
      out += ": ";
    }
    AppendJson(out, *it, indent + 2, !object);
  }
  out += '\n';
  out.append(indent, ' ');
  out += object ? '}' : ']';
}

}  // namespace

namespace {

// Text is handed to the stream in pieces of about this size.
constexpr size_t kPieceSize = size_t{1} << 20;

// Whether `value`, held at `indent`, is laid out on several lines whatever
// is added to it later: it is too long for one line and not a flat member of
// an array. Both only grow as members are added.
bool NeedsManyLines(const JsonDocument& value, size_t indent, bool inArray) {
  if (value.empty() || (inArray && IsFlat(value))) return false;
  if (2 * value.size() + 1 + indent > kLineWidth) return true;
  std::string line;
  AppendInline(line, value);
  return line.size() + indent > kLineWidth;
}

void AddMember(JsonDocument& container, const std::string& key, JsonDocument value) {
  if (container.is_object()) {
    container[key] = std::move(value);
  } else {
    container.push_back(std::move(value));
  }
}

}  // namespace

void JsonStreamWriter::BeginObject(std::string_view key) {
  Begin(true, key);
}

void JsonStreamWriter::BeginArray(std::string_view key) {
  Begin(false, key);
}

void JsonStreamWriter::Begin(bool object, std::string_view key) {
  Frame frame;
  frame.object = object;
  frame.inArray = !frames_.empty() && !frames_.back().object;
  frame.indent = frames_.empty() ? 0 : frames_.back().indent + 2;
  frame.key = key;
  frame.pending = object ? JsonDocument::object() : JsonDocument::array();
  frames_.push_back(std::move(frame));
}

void JsonStreamWriter::Add(std::string_view key, const JsonDocument& value) {
  Frame& frame = frames_.back();
  if (frame.expanded) {
    AppendMember(frame, std::string(key), value);
    FlushLarge();
    return;
  }
  AddMember(frame.pending, std::string(key), value);
  ExpandSettled();
}

void JsonStreamWriter::End() {
  Frame frame = std::move(frames_.back());
  frames_.pop_back();
  if (frame.expanded) {
    text_ += '\n';
    text_.append(frame.indent, ' ');
    text_ += frame.object ? '}' : ']';
  } else if (frames_.empty()) {
    AppendJson(text_, frame.pending, 0, false);
  } else if (frames_.back().expanded) {
    AppendMember(frames_.back(), frame.key, frame.pending);
  } else {
    AddMember(frames_.back().pending, frame.key, std::move(frame.pending));
    ExpandSettled();
  }
  if (frames_.empty()) {
    text_ += '\n';
    out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    out_.flush();
    text_.clear();
    written_ = true;
    return;
  }
  FlushLarge();
}

JsonDocument JsonStreamWriter::Held(size_t index) const {
  JsonDocument held = frames_.back().pending;
  for (size_t i = frames_.size() - 1; i > index; --i) {
    JsonDocument outer = frames_[i - 1].pending;
    AddMember(outer, frames_[i].key, std::move(held));
    held = std::move(outer);
  }
  return held;
}

void JsonStreamWriter::ExpandSettled() {
  // Expanded containers are the outer ones; a container can only need many
  // lines when every container around it does.
  size_t index = 0;
  while (index < frames_.size() && frames_[index].expanded) ++index;
  for (; index < frames_.size(); ++index) {
    Frame& frame = frames_[index];
    if (!NeedsManyLines(Held(index), frame.indent, frame.inArray)) return;
    if (index > 0) {
      // The container is the newest member of the one around it.
      Frame& parent = frames_[index - 1];
      text_ += parent.count == 0 ? "\n" : ",\n";
      text_.append(parent.indent + 2, ' ');
      if (parent.object) {
        AppendString(text_, frame.key);
        text_ += ": ";
      }
      ++parent.count;
    }
    text_ += frame.object ? '{' : '[';
    frame.expanded = true;
    JsonDocument members = std::move(frame.pending);
    frame.pending = JsonDocument();
    if (frame.object) {
      for (auto it = members.begin(); it != members.end(); ++it) {
        AppendMember(frame, it.key(), *it);
      }
    } else {
      for (const JsonDocument& value : members) AppendMember(frame, std::string(), value);
    }
  }
}

void JsonStreamWriter::AppendMember(Frame& frame, const std::string& key,
                                    const JsonDocument& value) {
  text_ += frame.count == 0 ? "\n" : ",\n";
  text_.append(frame.indent + 2, ' ');
  if (frame.object) {
    AppendString(text_, key);
    text_ += ": ";
  }
  AppendJson(text_, value, frame.indent + 2, !frame.object);
  ++frame.count;
}

void JsonStreamWriter::FlushLarge() {
  if (text_.size() < kPieceSize) return;
  out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
  text_.clear();
  written_ = true;
}

void WriteJsonDocument(std::ostream& out, const JsonDocument& document) {
  std::string text;
  AppendJson(text, document, 0, false);
  text += '\n';
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.flush();
}

}  // namespace vesk
