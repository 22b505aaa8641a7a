// Entry point: parse the command line, run one analysis, map the outcome to
// the exit status.
#include <iostream>

#include "app/vesk_app.h"
#include "util/analysis_error.h"

int main(int argc, char** argv) {
  VeskApp app;
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  }
  try {
    if (!app.Execute()) {
      std::cerr << "Error while running analysis." << std::endl;
      return 1;
    }
  } catch (const vesk::ListingError& error) {
    std::cerr << "Error: " << app.InputName() << ':' << error.Line() << ": " << error.what()
              << std::endl;
    return 1;
  } catch (const vesk::AnalysisError& error) {
    std::cerr << "Error: " << error.what() << std::endl;
    return 1;
  }
  return 0;
}
