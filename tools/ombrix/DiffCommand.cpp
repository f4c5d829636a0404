#include "DiffCommand.h"

#include "ombrix/compare/ModelComparator.h"

#include "Console.h"
#include "ExitCode.h"
#include "ModelFiles.h"
#include "ToolError.h"

#include <cstdio>

namespace Ombrix::Tools
{

DiffCommand::DiffCommand()
    : Command("diff",
              "Compare two definition files, or two data files applied to their definition, with the model "
              "comparator. Differences are grouped by the ID:path of the attribute concerned; B is compared "
              "with A, so a message reads \"<B's> expected <A's>\". Exits 1 when they differ.",
              "  ombrix diff run1/def.csv run2/def.csv\n  ombrix diff run1/out.csv run2/out.csv --def "
              "run1/def.csv")
{
}

void DiffCommand::do_addOptions(CLI::App& command)
{
  command.add_option("A", m_reference, "the reference file")->required()->check(CLI::ExistingFile);
  command.add_option("B", m_model, "the file compared with it")->required()->check(CLI::ExistingFile);
  command.add_option("--def", m_definition,
                     "the definition file of two data files (default: def.csv beside A)");
  command.add_option("--tolerance", m_tolerance, "relative tolerance of float and double values")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  command.add_flag("--json", m_json, "print the differences as one JSON object");
}

int DiffCommand::do_run()
{
  const bool referenceIsDefinition = ModelFiles::isDefinitionFile(m_reference);
  if (referenceIsDefinition != ModelFiles::isDefinitionFile(m_model))
    throw ToolError("one of " + m_reference + " and " + m_model +
                    " is a definition file and the other a data file: compare two of a kind");
  Model::EntityCollection reference;
  Model::EntityCollection model;
  if (referenceIsDefinition)
  {
    ModelFiles::readDefinition(m_reference, reference);
    ModelFiles::readDefinition(m_model, model);
  }
  else
  {
    const std::string definition = ModelFiles::definitionFor(m_reference, m_definition);
    ModelFiles::readDefinition(definition, reference);
    ModelFiles::readDefinition(definition, model);
    CSVDataFileParser referenceParser(reference, ModelFiles::allChronologies());
    ModelFiles::readData(m_reference, referenceParser);
    CSVDataFileParser modelParser(model, ModelFiles::allChronologies());
    ModelFiles::readData(m_model, modelParser);
  }
  Model::ModelComparator comparator;
  comparator.setDoubleTolerance(m_tolerance);
  comparator.setFloatTolerance(static_cast<float>(m_tolerance));
  comparator.compareCollection(model, reference);
  const auto& differences = comparator.getMessages();

  std::size_t count = 0;
  std::string out = m_json ? "{\"differences\": {" : "";
  for (const auto& [key, messages] : differences)
  {
    if (m_json)
    {
      out += (count ? ", " : "") + Console::jsonString(key) + ": [";
      for (std::size_t m = 0; m < messages.size(); ++m)
        out += (m ? ", " : "") + Console::jsonString(messages[m]);
      out += "]";
    }
    else
    {
      out += key + "\n";
      for (const std::string& message : messages)
      {
        // Multi-line messages (child listings, strings) stay readable under their key.
        std::string indented = "  ";
        for (const char c : message)
          indented += c == '\n' ? std::string("\n  ") : std::string(1, c);
        out += indented + "\n";
      }
    }
    count += messages.size();
  }
  if (m_json)
    out += "}, \"count\": " + std::to_string(count) + "}\n";
  else
    out += count == 0 ? "no differences\n"
                      : std::to_string(count) + " difference" + (count == 1 ? "" : "s") + " in " +
                            std::to_string(differences.size()) + " place" +
                            (differences.size() == 1 ? "" : "s") + "\n";
  std::fputs(out.c_str(), stdout);
  return count == 0 ? exitFine : exitProblems;
}

} // namespace Ombrix::Tools
