// What a panel at the side is: a name and a title for its tab, the parts of the state it shows, and how.
import type { Chosen } from "../load/chosen";
import type { Client } from "../load/client";
import type { Actions } from "../state/actions";
import type { AppStore, State } from "../state/state";

export interface PanelContext {
  store: AppStore;
  actions: Actions;
  client: Client;
  add(recording: Chosen): Promise<void>; // beside what is open
}

export interface Panel {
  name: string; // as State.panel
  title: string;
  watches: (keyof State)[];
  // Fills `place`, which is empty; may go on later, as long as `isCurrent()`.
  show(place: HTMLElement, context: PanelContext, isCurrent: () => boolean): void | Promise<void>;
  // For changes that what is shown can follow, while the panel is open.
  follows?: (keyof State)[];
  follow?(context: PanelContext): void;
}
