#pragma once

// Everything an application needs, in one header.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MPLANE.h"
#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/shadowMatrixStack.h"
#include "ravolt/zlf.h"
