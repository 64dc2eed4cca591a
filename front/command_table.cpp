#include "front/command_table.h"

#include <cstring>

std::int32_t run_command(int argument_count, Arguments arguments, std::span<const Command> commands,
                         Action otherwise) {
  for (const Command& command : commands) {
    if (command.argument_count != argument_count) continue;
    if (command.word == nullptr || std::strcmp(arguments[command.word_index], command.word) == 0) {
      return command.action(arguments);
    }
  }
  return otherwise(arguments);
}
