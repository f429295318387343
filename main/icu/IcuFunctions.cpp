// The definitions of the flat layer: one for each line of the headers included last.

#include <qvxsys/QvxICU.h> // declarations: QvxICU.cpp has the definitions

#include "IcuForward.h"

#include <qvxsys/IcuFunctions.h> // definitions, by IcuForward.h
