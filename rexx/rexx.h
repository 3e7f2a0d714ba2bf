// The REXX interpreter's public interface.
#pragma once
