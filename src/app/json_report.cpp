// The common header of the JSON reports and their writer.
#include "app/json_report.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

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

void WriteJsonDocument(std::ostream& out, const JsonDocument& document) {
  std::string text;
  AppendJson(text, document, 0, false);
  text += '\n';
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.flush();
}

}  // namespace vesk
