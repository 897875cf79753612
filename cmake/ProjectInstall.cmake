# The installed tree: libraries, headers, programs, find_package(TRFoundation) and pkg-config.
