// The names of threads and threads that cannot be started have no test here: Wine keeps no names, and there is no limit
// to lower that would not hit the test itself.
