;;; nebgit-watch.el --- Changes that other programs make  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Asks the server to report changes of the repositories whose buffers are open, and calls
;; `nebgit-changed-hook' for them.  Where the server cannot watch, the buffers are refreshed after
;; saving, after own requests and when a frame gets the focus.

;;; Code:

(require 'nebgit-request)

(defcustom nebgit-watch-working-tree t
  "Whether changes of files are reported, too, and not only those of git.
If the system cannot watch so many folders, only those of git are watched."
  :type 'boolean
  :group 'nebgit)

(defvar nebgit-watch--roots (make-hash-table :test #'equal)
  "Watched working copies, and their watches: t while one is requested, or nil.")

(defvar-local nebgit-watch--root nil
  "Working copy whose changes concern this buffer.")

(defconst nebgit-watch--changes
  '("head" "references" "index" "stash" "operation" "configuration" "workingTree")
  "All changes that the server reports.")

(defun nebgit-watch-buffer (root)
  "Watch ROOT while the current buffer exists."
  (setq nebgit-watch--root root)
  (add-hook 'kill-buffer-hook #'nebgit-watch--buffer-killed nil t)
  (unless (gethash root nebgit-watch--roots)
    (puthash root t nebgit-watch--roots)
    (nebgit-watch--request root nebgit-watch-working-tree)))

(defun nebgit-watched-p (root)
  "Return non-nil if the server reports what happens in ROOT."
  (stringp (gethash root nebgit-watch--roots)))

(defun nebgit-watch--request (root working-tree)
  "Ask the server to watch ROOT, with WORKING-TREE also its files."
  (nebgit-call
   'sourceControl/watch
   (lambda ()
     (list :sourceTree (list :location (nebgit-encode (directory-file-name root)))
           :workingTree (if working-tree t :json-false)))
   (lambda (result) (nebgit-watch--started root (plist-get result :watch)))
   (lambda (problem)
     (if (and working-tree (nebgit-watch--limit-p (plist-get problem :data)))
         (nebgit-watch--request root nil)
       (puthash root nil nebgit-watch--roots)))))

(defun nebgit-watch--limit-p (object)
  "Return non-nil if OBJECT, about a watch, names the limit of the system."
  (equal (plist-get object :class) "system-limit"))

(defun nebgit-watch--started (root watch)
  "Keep WATCH of ROOT, or end it if the last buffer is gone.
What the buffers show was read before, so they read it again."
  (puthash root watch nebgit-watch--roots)
  (nebgit-watch--prune)
  (when (nebgit-watched-p root)
    (run-hook-with-args 'nebgit-changed-hook root nebgit-watch--changes)))

(defun nebgit-watch--buffer-killed ()
  "End the watches that no buffer needs, when the current buffer is gone."
  (run-at-time 0 nil #'nebgit-watch--prune))

(defun nebgit-watch--prune ()
  "End the watches of working copies without a buffer."
  (let ((needed (delq nil (mapcar (lambda (buffer)
                                    (buffer-local-value 'nebgit-watch--root buffer))
                                  (buffer-list)))))
    (dolist (root (hash-table-keys nebgit-watch--roots))
      (let ((watch (gethash root nebgit-watch--roots)))
        (unless (or (eq watch t) (member root needed))
          (remhash root nebgit-watch--roots)
          (when (and watch (nebgit-server-p))
            (nebgit-call 'sourceControl/unwatch (list :watch watch) #'ignore #'ignore)))))))

(defun nebgit-watch--changed (params)
  "Call `nebgit-changed-hook' for the repository in PARAMS of a notification."
  (let ((root (nebgit-watch--root-of (plist-get params :watch))))
    (when root
      (run-hook-with-args 'nebgit-changed-hook root (nebgit-list (plist-get params :changes))))))

(defun nebgit-watch--root-of (watch)
  "Return the working copy that has WATCH."
  (cl-loop for root being the hash-keys of nebgit-watch--roots using (hash-values value)
           when (equal value watch) return root))

(defun nebgit-watch--ended (params)
  "Forget the watch in PARAMS; watch less if the system's limit was the reason.
Otherwise the repository is gone, which its buffers show then."
  (let ((root (nebgit-watch--root-of (plist-get params :watch))))
    (when root
      (puthash root nil nebgit-watch--roots)
      (if (not (and (nebgit-watch--limit-p params) nebgit-watch-working-tree))
          (run-hook-with-args 'nebgit-changed-hook root)
        (puthash root t nebgit-watch--roots)
        (nebgit-watch--request root nil)))))

(defun nebgit-watch--restart ()
  "Watch again after the server was restarted."
  (dolist (root (hash-table-keys nebgit-watch--roots))
    (unless (eq (gethash root nebgit-watch--roots) t)
      (puthash root t nebgit-watch--roots)
      (nebgit-watch--request root nebgit-watch-working-tree)
      (run-hook-with-args 'nebgit-changed-hook root))))

(defun nebgit-watch--focus ()
  "Refresh what is not watched after a frame got the focus."
  (when (cl-some (lambda (frame) (eq (frame-focus-state frame) t)) (frame-list))
    (cl-loop for root being the hash-keys of nebgit-watch--roots using (hash-values watch)
             unless watch do (run-hook-with-args 'nebgit-changed-hook root))))

(setf (alist-get 'sourceControl/didChange nebgit-notification-functions) #'nebgit-watch--changed
      (alist-get 'sourceControl/watchEnded nebgit-notification-functions) #'nebgit-watch--ended)
(add-hook 'nebgit-server-started-hook #'nebgit-watch--restart)
(add-function :after after-focus-change-function #'nebgit-watch--focus)

(provide 'nebgit-watch)
;;; nebgit-watch.el ends here
