// Machine-readable reports: every JSON document the program writes starts
// with the same two fields and is written the same way.
#pragma once

#include <ostream>
#include <string>

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

}  // namespace vesk
