#pragma once

#include <QString>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "app/CommandLine.h"

namespace lxm {

class Clock;
class UsbDriver;
namespace sim {
struct LightScene;
}

// The options only --characterise takes (--characterise, --measure, --readings, --reference):
// true when arg is one of them; sets cl.error on a bad value. first: the first of them given.
bool ParseCharacteriseOption(const std::string& arg, const std::function<std::optional<std::string>()>& value,
                             const std::optional<std::string>& inlineValue, CommandLine& cl, std::string& first);
// What goes with what, once the whole line is read; given: --characterise is on the line,
// output: the --output given. The error, empty when fine.
std::string CheckCharacterise(CommandLine& cl, bool given, const std::string& output, const std::string& first);
std::string CharacteriseHelp();

// The simulated bench as the report names it: light, source, object, glass, temperature, noise.
QString SceneText(const sim::LightScene& scene);

// Sweeps the sensor's settings on the measuring core, with no window object, and writes the
// table, plot and report into the folder: the table on out, progress and problems on err.
// scene: the simulated board's bench, empty on a real board. Exit status as for --collect.
int RunCharacterise(const CommandLine& cl, UsbDriver& driver, Clock& clock, const QString& scene, std::FILE* out,
                    std::FILE* err, bool progress);

}  // namespace lxm
