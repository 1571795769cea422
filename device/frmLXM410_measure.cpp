// Measurement selection, single reads and conversion on the family form.
#include "device/frmLXM410.h"

namespace lxm {

void frmLXM410::OptMeasure_Click(int /*Index*/) {}
void frmLXM410::OptMeasure_GotFocus(int /*Index*/) {}
void frmLXM410::cmdRead_ADC_Click() {}
void frmLXM410::cmdProx_IR_Click() {}
void frmLXM410::cmdProx_IR_GotFocus() {}
std::int32_t frmLXM410::ReadDataRegisters() { return 0; }
double frmLXM410::ConvertToLux(double /*counts*/) const { return 0; }
void frmLXM410::SetSwatch(int /*red*/) {}

}  // namespace lxm
