#pragma once
// Everything the library exports.

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/CodePointIterator.h>
#include <qvxsys/CodePointView.h>
#include <qvxsys/ErrorOrigin.h>
#include <qvxsys/Format.h>
#include <qvxsys/LogicException.h>
#include <qvxsys/Platform.h>
#include <qvxsys/Processor.h>
#include <qvxsys/QuorvexError.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/QvxICU.h>
#include <qvxsys/ReferenceCount.h>
#include <qvxsys/StringUtils.h>
#include <qvxsys/TCType.h>
#include <qvxsys/TError.h>
#include <qvxsys/TFormatStringCore.h>
#include <qvxsys/TMemory.h>
#include <qvxsys/TScanStringCore.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringException.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/TTextDecoder.h>
#include <qvxsys/TextArguments.h>
#include <qvxsys/WideText.h>
#include <qvxsys/std.h>
