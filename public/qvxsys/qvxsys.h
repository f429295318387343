#pragma once
// Everything the library exports.

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/CodePointIterator.h>
#include <qvxsys/CodePointView.h>
#include <qvxsys/KMP.h>
#include <qvxsys/Platform.h>
#include <qvxsys/Processor.h>
#include <qvxsys/QvxICU.h>
#include <qvxsys/StringUtils.h>
#include <qvxsys/TCType.h>
#include <qvxsys/TMemory.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringException.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TTextDecoder.h>
#include <qvxsys/TextArguments.h>
#include <qvxsys/TextComparison.h>
#include <qvxsys/WideText.h>
