#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

#include "playerx/window/model/Film.h"

namespace playerx::window {

/// An input that was not queued.
struct RefusedInput {
  QString input;
  QString code;      ///< stable word
  QString sentence;  ///< why, and what can be done
};

/// What became of inputs that were handed over.
struct InputReport {
  int added = 0;         ///< films queued
  int alreadyThere = 0;  ///< films that the queue held already
  QList<FilmId> films;   ///< those films, in the order of the inputs
  QList<RefusedInput> refused;
};

/// What a ticket says.
struct TicketReport {
  QString path;
  int films = 0;
  QString problem;  ///< the first sentence about what cannot be downloaded; empty when all can
  int line = 0;     ///< of that in the ticket, from 1 on; 0 for the ticket as a whole
};

/// Something the queue tells the user about a film that is being worked on.
struct Notice {
  enum Kind { kNoSpace, kNotAuthorized, kAddressFailed, kTransferBroken, kServices };
  Kind kind = kServices;
  FilmId film = 0;  ///< 0 when not known
  QString text;     ///< a sentence on what is the matter, or the services' words
};

/// The online services want to know which slot a film takes.
struct SlotQuestion {
  int number = 0;  ///< names the question
  QString title;
};

/// How the queue works for this user.
struct QueuePreferences {
  enum Proxy { kSystemProxy, kNoProxy, kOwnProxy };

  QString mediaFolder;
  Proxy proxy = kSystemProxy;
  QString proxyAddress;     ///< for kOwnProxy
  quint64 speedLimit = 0;   ///< bytes a second; 0 for no limit
  QString authorityFile;    ///< PEM file; empty for the system's authorities
  QString servicesAddress;  ///< empty for no online services

  bool operator==(const QueuePreferences&) const = default;
};

}  // namespace playerx::window

Q_DECLARE_METATYPE(playerx::window::InputReport)
Q_DECLARE_METATYPE(playerx::window::TicketReport)
Q_DECLARE_METATYPE(playerx::window::Notice)
Q_DECLARE_METATYPE(playerx::window::SlotQuestion)
Q_DECLARE_METATYPE(playerx::window::QueuePreferences)
