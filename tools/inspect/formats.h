#pragma once

// One function for each format: fills the content and the findings of an inspection of its file.

#include "tools/inspect/inspection.h"

namespace ravolt::tool::inspect {

void inspectScene(Inspection &inspection);
void inspectClip(Inspection &inspection);
void inspectTexture(Inspection &inspection);
void inspectSettings(Inspection &inspection);
void inspectKerning(Inspection &inspection);
void inspectInterface(Inspection &inspection);
void inspectEmitter(Inspection &inspection);
void inspectTerrain(Inspection &inspection);
void inspectGeometry(Inspection &inspection);
void inspectVideo(Inspection &inspection);

} // namespace ravolt::tool::inspect
