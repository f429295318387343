#pragma once
// Everything about tasks: futures and promises, starting and grouping tasks, cancellation, deadlines, coroutines. The
// manual is in Future.h.

#include <qvxsys/AsyncTaskTls.h>
#include <qvxsys/Cancel.h>
#include <qvxsys/Deadline.h>
#include <qvxsys/Future.h>
#include <qvxsys/FutureCoroutine.h>
#include <qvxsys/FutureGroup.h>
#include <qvxsys/Launch.h>
#include <qvxsys/Promise.h>
#include <qvxsys/Run.h>
#include <qvxsys/SharedState.h>
