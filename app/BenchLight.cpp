#include "app/BenchLight.h"

#include "simboard/SimBoard.h"

namespace lxm {

BenchLight SimulatedBench(const sim::LightScene& scene) {
    static constexpr const char* kKinds[] = {"steady", "sine", "steps", "noise"};
    const sim::SourceInfo& source = sim::InfoOf(scene.source);
    BenchLight light;
    if (source.visible > 0) light.trueLux = scene.ambientLux;
    light.scene = QStringLiteral("simulated board: %1 %2 %3 of %4 light, %5 Hz mains, cover glass %6 %, %7 °C%8")
                      .arg(QLatin1String(kKinds[int(scene.kind)]))
                      .arg(scene.ambientLux)
                      .arg(source.visible > 0 ? QStringLiteral("lux") : QStringLiteral("units"))
                      .arg(QLatin1String(source.caption))
                      .arg(scene.mainsHz)
                      .arg(scene.glassPercent)
                      .arg(scene.temperatureC)
                      .arg(scene.ideal ? QStringLiteral(", ideal chip") : QString());
    return light;
}

}  // namespace lxm
