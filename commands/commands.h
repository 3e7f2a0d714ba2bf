// The command interpreter and command table.
#pragma once
