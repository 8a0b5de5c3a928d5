#include "common/AccessLock.h"

pthread_mutex_t access_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
pthread_mutexattr_t access_mutex_attr;
