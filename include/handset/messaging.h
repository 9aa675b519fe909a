#pragma once

// Messaging family: stored messages and MMS records.
