// Continuous collection on the family form.
#include "device/frmLXM410.h"

namespace lxm {

void frmLXM410::cmdCollectData_Click() {}
void frmLXM410::cmdStopData_Click() {}
void frmLXM410::cmdClearHist_Click() {}
void frmLXM410::txtInterval_KeyPress(int /*KeyAscii*/) {}
void frmLXM410::txtInterval_LostFocus() {}

}  // namespace lxm
