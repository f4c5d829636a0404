#include "Command.h"

namespace Ombrix::Tools
{

void Command::addTo(CLI::App& app)
{
  m_subcommand = app.add_subcommand(m_name, m_description);
  m_subcommand->footer(
      "\nExit codes: 0 fine, 1 problems found, 2 bad usage or unreadable input.\n\nExample:\n" + m_example);
  do_addOptions(*m_subcommand);
}

} // namespace Ombrix::Tools
