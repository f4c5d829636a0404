// ValidateCommand: `ombrix validate FILE`, every problem of a definition or data file, each as
// "file:row: message": the reader's own messages (read with strict numbers, every faulty row reported),
// and what the reader would silently accept or alter.
#pragma once

#include "Command.h"

#include <vector>

namespace Ombrix::Tools
{

class ValidateCommand : public Command
{
public:
  ValidateCommand();

  struct Problem
  {
    std::size_t row = 0; // 0: the file as a whole
    std::string message;
  };

protected:
  void do_addOptions(CLI::App& command) override;
  int do_run() override;

private:
  std::vector<Problem> validate(bool& definition) const;

  std::string m_file;
  std::string m_definition;
  std::string m_reader;
  bool m_skipReadOnly = false;
  bool m_roundTrip = false;
  bool m_json = false;
};

} // namespace Ombrix::Tools
