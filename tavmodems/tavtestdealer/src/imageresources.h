#pragma once

/// Makes the program's images known under their names, such as ":/up.png". To be called before a
/// widget names one: a static library's resources are dropped by the linker unless something asks
/// for them. Further calls do nothing.
void initImageResources();
