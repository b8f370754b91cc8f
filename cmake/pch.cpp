// The one source of the target that compiles pch.h.
