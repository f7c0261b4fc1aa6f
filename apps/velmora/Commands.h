#pragma once

#include <CLI/CLI.hpp>

#include <memory>

/// The program's command line with all commands.
std::unique_ptr<CLI::App> makeProgram();

/// One function per command, each in a file of its own. It adds the subcommand to the program; parsing the command line
/// then runs the command, and the parser passes its exceptions on.
void addRenderCommand(CLI::App& program);
void addInfoCommand(CLI::App& program);
void addVerifyCommand(CLI::App& program);
void addViewCommand(CLI::App& program);
void addImportCommand(CLI::App& program);
void addExportCommand(CLI::App& program);
void addCheckCommand(CLI::App& program);
void addCacheCommand(CLI::App& program);
