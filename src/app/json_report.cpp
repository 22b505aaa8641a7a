// The common header of the JSON reports and their writer.
#include "app/json_report.h"

#include <string>

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

void WriteJsonDocument(std::ostream& out, const JsonDocument& document) {
  // Invalid UTF-8 in listing text (instruction or function names) is
  // replaced rather than ending the run with an exception.
  const std::string text = document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out << '\n';
  out.flush();
}

}  // namespace vesk
