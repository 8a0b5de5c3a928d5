#pragma once

/**
 * Reads the switch's list of domains and warns, once, when it fills its value: the cache then knows a part of
 * the fabric only.
 */
void checkDomainList();

/** Whether that was so at the last check. */
bool domainListFilled();
